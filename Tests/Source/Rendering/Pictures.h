// Pictures as tests look at them.
#pragma once

#include "Layouts/Rendering/CLayoutRenderer.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Platform/Drawing.h"
#include "support/Child.h"
#include "support/Files.h"

#include <png.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

struct tPixel {
    int red;
    int green;
    int blue;
    int alpha;
    int Brightness() const { return (red + green + blue) / 3; }
};

/// A decoded PNG.
class CPixels {
public:
    explicit CPixels(const std::string& png)
    {
        mImage.version = PNG_IMAGE_VERSION;
        if (png_image_begin_read_from_memory(&mImage, png.data(), png.size()) != 0) {
            mImage.format = PNG_FORMAT_RGBA;
            mBytes.resize(PNG_IMAGE_SIZE(mImage));
            if (png_image_finish_read(&mImage, nullptr, mBytes.data(), 0, nullptr) == 0) {
                mBytes.clear();
            }
        }
        png_image_free(&mImage);
        EXPECT_FALSE(mBytes.empty()) << "no picture: " << mImage.message;
    }

    int Width() const { return static_cast<int>(mImage.width); }
    int Height() const { return static_cast<int>(mImage.height); }
    /// The pixel that a point lies in; all zeros outside.
    tPixel At(double x, double y) const
    {
        if (mBytes.empty() || x < 0 || y < 0 || x >= Width() || y >= Height()) {
            return {};
        }
        const size_t at = 4 * (static_cast<size_t>(y) * mImage.width + static_cast<size_t>(x));
        return {mBytes[at], mBytes[at + 1], mBytes[at + 2], mBytes[at + 3]};
    }

    /// Calls visit(x, y, pixel).
    template <typename tVisit>
    void ForEach(tVisit visit) const
    {
        for (int i = 0; i < Width() * Height(); ++i) {
            visit(i % Width(), i / Width(), At(i % Width(), i / Width()));
        }
    }

private:
    png_image mImage = {};
    std::vector<unsigned char> mBytes;
};

/// Makes the fonts of fonts-dejavu-core all that this process, which has not asked for a font yet, finds.
/// @return false where they are not installed
inline bool PinFonts()
{
    const std::string fonts = "/usr/share/fonts/truetype/dejavu";
    const std::string configuration = WriteTestFile(
        "pinned.conf",
        "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"urn:fontconfig:fonts.dtd\"><fontconfig><dir>" + fonts +
            "</dir><cachedir>" + TestPath("font-cache") + "</cachedir></fontconfig>");
    setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
    return std::filesystem::exists(fonts + "/DejaVuSans.ttf");
}

/// Draws a layout. @param renderer  also tells where things are in the picture
inline std::string DrawPicture(CLayoutRenderer& renderer, Platform::ePictureFormat format)
{
    const auto picture = Platform::BeginPicture(format, renderer.GetWidth(), renderer.GetHeight());
    std::string bytes;
    if (picture != nullptr) {
        renderer.Draw(*picture);
    }
    EXPECT_TRUE(picture != nullptr && picture->Finish(bytes));
    return bytes;
}

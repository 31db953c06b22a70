#include "Properties.h"

#include "Bounds.h"
#include "Layouts/Rendering/CLayoutRenderer.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Source/Rendering/CRecordedDrawing.h"
#include "support/ScratchFile.h"

#include <algorithm>

namespace {
constexpr int kStyles = 5;
constexpr int kWrittenStyle = 4; ///< whose picture is not too large to be written
/// Sides of a small picture and of a large one, pixels.
constexpr int kSides[] = {1, 300, Bounds::kMostPictureSide};
/// Longest document whose pictures are also written; the others are only drawn.
constexpr size_t kWritten = 6000;
} // namespace

std::string Properties::Drawing(std::string_view bytes)
{
    static CScratchFile sFile;
    sFile.Set(bytes);
    CBoundLayout layout;
    layout.Load(sFile.Path());
    for (int style = 1; style <= kStyles; ++style) {
        tPictureOptions options;
        options.trackStyle = style;
        // Every option in some picture, the sides going round with the styles.
        options.width = options.height = kSides[static_cast<size_t>(style) % std::size(kSides)];
        options.isExact = style == 2;
        options.isScalable = style % 2 == 0;
        options.isTransparent = style == 3;
        options.hasLabels = options.hasGrid = style > 3;
        CLayoutRenderer renderer(layout, options);
        CRecordedDrawing drawing;
        renderer.Draw(drawing);
        if (!drawing.IsSound()) {
            return "style " + std::to_string(style) + " draws with numbers that are no good";
        }
        if (renderer.GetWidth() < 1 || renderer.GetHeight() < 1 || renderer.GetWidth() > options.width ||
            renderer.GetHeight() > options.height) {
            return "style " + std::to_string(style) + " wants a picture of " + std::to_string(renderer.GetWidth()) +
                   " by " + std::to_string(renderer.GetHeight());
        }
        if (style == kWrittenStyle && bytes.size() <= kWritten) {
            const auto picture =
                Platform::BeginPicture(Platform::ePictureFormat::kSVG, renderer.GetWidth(), renderer.GetHeight());
            std::string written;
            if (picture == nullptr) {
                return "no drawing library";
            }
            renderer.Draw(*picture);
            if (!picture->Finish(written) || !written.ends_with("</svg>\n")) {
                return "the picture was not finished";
            }
        }
    }
    return {};
}

#include "Platform/Drawing.h"

#include "Bounds.h"
#include "Platform/Fonts.h"
#include "TextModule.h"

namespace Platform {
std::unique_ptr<CPicture> BeginPicture(ePictureFormat format, int width, int height)
{
    if (width < 1 || height < 1 || width > Bounds::kMostPictureSide || height > Bounds::kMostPictureSide ||
        int64_t{width} * height > Bounds::kMostPicturePixels) {
        return nullptr;
    }
    static const auto sBegin = reinterpret_cast<tBeginPicture>(FindInTextModule(kBeginPictureName));
    static constexpr tTextServices kServices = {MeasureText, FindFontForModule};
    return std::unique_ptr<CPicture>(sBegin != nullptr ? sBegin(format, width, height, &kServices) : nullptr);
}
} // namespace Platform

// The functions that libvelmora-text.so shows.
#include "TextModule.h"

#include "CairoPicture.h"
#include "Typesetter.h"

#include <memory>

extern "C" __attribute__((visibility("default"))) bool VelmoraMeasureLine(const char* font, const char* text,
                                                                          size_t length, double* width, double* height)
{
    PangoLayout* const layout = CTypesetter::Instance().LayOut(font, text, length);
    if (layout == nullptr) {
        return false;
    }
    PangoRectangle logical = {};
    pango_layout_get_extents(layout, nullptr, &logical);
    *width = length == 0 ? 0 : static_cast<double>(logical.width) / PANGO_SCALE;
    *height = static_cast<double>(logical.height) / PANGO_SCALE;
    return true;
}

extern "C" __attribute__((visibility("default"))) Platform::CPicture*
VelmoraBeginPicture(Platform::ePictureFormat format, int width, int height, const tTextServices* services)
{
    auto picture = std::make_unique<CCairoPicture>(format, width, height, *services);
    return picture->IsGood() ? picture.release() : nullptr;
}

#include "CRecordedDrawing.h"
#include "Properties.h"

#include "Bounds.h"
#include "Layouts/Rendering/CLayoutRenderer.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "support/ScratchFile.h"

#include <algorithm>

namespace {
constexpr int kStyles = 5;
constexpr int kWrittenStyle = 4; ///< whose picture is also written
/// Sides of a small picture and of a large one, pixels.
constexpr int kSides[] = {1, 300, Bounds::kMostPictureSide};
} // namespace

std::string Properties::Drawing(std::string_view bytes)
{
    static CScratchFile sFile;
    sFile.Set(bytes);
    CBoundLayout layout;
    layout.Load(sFile.Path());
    // Every style and every option for some inputs.
    const int style = 1 + static_cast<int>(bytes.size() % kStyles);
    tPictureOptions options;
    options.trackStyle = style;
    options.width = options.height = kSides[static_cast<size_t>(style) % std::size(kSides)];
    options.isExact = style == 2;
    options.isScalable = style % 2 == 0;
    options.isTransparent = style == 3;
    options.hasLabels = options.hasGrid = style > 3;
    CLayoutRenderer renderer(layout, options);
    CRecordedDrawing drawing;
    renderer.Draw(drawing);
    if (!drawing.IsSound()) {
        return "style " + std::to_string(style) + " is not drawn well, " + drawing.GetWrong();
    }
    if (renderer.GetWidth() < 1 || renderer.GetHeight() < 1 || renderer.GetWidth() > options.width ||
        renderer.GetHeight() > options.height) {
        return "style " + std::to_string(style) + " wants a picture of " + std::to_string(renderer.GetWidth()) +
               " by " + std::to_string(renderer.GetHeight());
    }
    if (style != kWrittenStyle) {
        return {};
    }
    const auto picture =
        Platform::BeginPicture(Platform::ePictureFormat::kSVG, renderer.GetWidth(), renderer.GetHeight());
    if (picture == nullptr) {
        return "no drawing library";
    }
    renderer.Draw(*picture);
    std::string written;
    return picture->Finish(written) && written.ends_with("</svg>\n") ? "" : "the picture was not finished";
}

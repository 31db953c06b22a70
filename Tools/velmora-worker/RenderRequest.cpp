// The request for a layout's picture.
#include "Bounds.h"
#include "Layouts/Rendering/CLayoutRenderer.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Requests.h"

#include "Layers/CLayerManager.h"
#include "Platform/Drawing.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"
#include "protocol/BuiltInDocument.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace {
/// A page of A4 in points, the longer side first.
constexpr int kPageLong = 842;
constexpr int kPageShort = 595;

/// Sets the layers by their names. @return an empty string, or the name of the first that is not there
std::string ChooseLayers(CLayout& layout, const std::vector<std::string>& names, tPictureOptions& options)
{
    CLayerManager* const layers = layout.GetLayerList();
    for (const std::string& name : names) {
        bool found = false;
        for (int i = 0; i < layers->GetNumberOfLayers(); ++i) {
            const CLayer* layer = layers->GetLayerAtIndex(i);
            if (Platform::MacRomanToUtf8(layer->GetName()) == name) {
                options.layers.insert(layer);
                found = true;
            }
        }
        if (!found) {
            return name;
        }
    }
    options.hasLayers = !names.empty();
    return {};
}

Platform::ePictureFormat FormatOf(ePictureKind kind)
{
    switch (kind) {
    case ePictureKind::kSVG:
        return Platform::ePictureFormat::kSVG;
    case ePictureKind::kPDF:
        return Platform::ePictureFormat::kPDF;
    case ePictureKind::kPNG:
        break;
    }
    return Platform::ePictureFormat::kPNG;
}

tAnswer Draw(CLayout& layout, const tPictureWish& wish, tPictureOptions options)
{
    std::optional<CLayoutRenderer> renderer(std::in_place, layout, options);
    if (wish.kind == ePictureKind::kPDF && wish.width == 0) { // a page, the way round that suits the layout
        const bool isWide = renderer->GetWidth() >= renderer->GetHeight();
        options.width = isWide ? kPageLong : kPageShort;
        options.height = isWide ? kPageShort : kPageLong;
        options.isExact = true;
        renderer.emplace(layout, options);
    }
    const auto picture = Platform::BeginPicture(FormatOf(wish.kind), renderer->GetWidth(), renderer->GetHeight());
    if (picture == nullptr) {
        return MakeFailure(
            eFailure::kMemory,
            "the picture cannot be begun: its pixels exceed the memory granted, or the drawing library is missing");
    }
    renderer->Draw(*picture);
    tAnswer answer;
    if (!picture->Finish(answer.picture)) {
        return MakeFailure(eFailure::kMemory, "the picture could not be drawn in the memory granted");
    }
    answer.ok = true;
    answer.verb = eVerb::kRender;
    answer.report = nlohmann::ordered_json({{"width", renderer->GetWidth()},
                                            {"height", renderer->GetHeight()},
                                            {"elements", renderer->GetNumberOfElements()},
                                            {"strays", renderer->GetNumberOfStrays()},
                                            {"labels_left_out", renderer->GetNumberOfLeftOutLabels()}})
                        .dump();
    return answer;
}
} // namespace

void PrepareDrawing()
{
    // A first picture with a text in it opens all that any other needs. What is missing shows at the first request.
    const auto picture = Platform::BeginPicture(Platform::ePictureFormat::kPNG, 16, 16);
    if (picture != nullptr) {
        double width = 0.0;
        double height = 0.0;
        picture->MeasureText(BuiltInDocument::kText, {}, width, height);
        picture->DrawText(BuiltInDocument::kText, 0.0, 0.0, {});
        std::string bytes;
        picture->Finish(bytes);
    }
}

tAnswer AnswerRender(const std::string& path, int document, const tPictureWish& wish)
{
    if (wish.width > static_cast<uint32_t>(Bounds::kMostPictureSide) ||
        wish.height > static_cast<uint32_t>(Bounds::kMostPictureSide) ||
        uint64_t{wish.width} * wish.height > uint64_t{Bounds::kMostPicturePixels}) {
        return MakeFailure(eFailure::kMemory, "the picture is too large");
    }
    CBoundLayout layout;
    const int code = layout.Load(path);
    if (code != CLayout::kLoaded) {
        return MakeLoadFailure(code, layout.GetElements().size(), document);
    }
    tPictureOptions options;
    options.width = static_cast<int>(wish.width);
    options.height = static_cast<int>(wish.height);
    options.isExact = options.isTransparent = wish.isThumbnail;
    options.isPrinted = wish.kind == ePictureKind::kPDF;
    options.isScalable = wish.kind != ePictureKind::kPNG;
    options.hasLabels = wish.hasLabels;
    options.hasGrid = wish.hasGrid;
    options.trackStyle = UTrackStyles::CodeOf(wish.style);
    const std::string missing = ChooseLayers(layout, wish.layers, options);
    if (!missing.empty()) {
        return MakeFailure(eFailure::kPath, "there is no layer '" + missing + "'");
    }
    return Draw(layout, wish, options);
}

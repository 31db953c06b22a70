// The request for a layout's picture.
#include "Bounds.h"
#include "Layouts/Rendering/CLayoutRenderer.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Requests.h"
#include "Texts.h"

#include "Layers/CLayerManager.h"
#include "Platform/Drawing.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"
#include "protocol/BuiltInDocument.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <sys/stat.h>

namespace {
/// A page of A4 in points, the longer side first.
constexpr int kPageLong = 842;
constexpr int kPageShort = 595;

/// Whether two texts differ in capitals only.
bool IsSameInAnyCase(const std::string& one, const std::string& other)
{
    const CFStringRef first = MakeString(one);
    const CFStringRef second = MakeString(other);
    const bool isSame =
        first != nullptr && second != nullptr && CFStringCompare(first, second, kCFCompareCaseInsensitive) == 0;
    for (const CFStringRef text : {first, second}) {
        if (text != nullptr) {
            CFRelease(text);
        }
    }
    return isSame;
}

/// Says which layers there are, the first of them.
std::string ListLayers(const std::vector<std::string>& names)
{
    constexpr size_t kMostNamed = 20;
    std::string list;
    for (size_t i = 0; i < std::min(names.size(), kMostNamed); ++i) {
        list += (i > 0 ? ", '" : "'") + names[i] + "'";
    }
    const size_t others = names.size() - std::min(names.size(), kMostNamed);
    return names.empty() ? "the layout has none"
                         : "there are " + list + (others > 0 ? " and " + std::to_string(others) + " more" : "");
}

/// Sets the layers by their names, those of that very name before those that differ in capitals.
/// @return an empty string, or what is wrong with the names
std::string ChooseLayers(CLayout& layout, const std::vector<std::string>& names, tPictureOptions& options)
{
    CLayerManager* const layers = layout.GetLayerList();
    std::vector<std::string> present;
    present.reserve(static_cast<size_t>(layers->GetNumberOfLayers()));
    for (int i = 0; i < layers->GetNumberOfLayers(); ++i) {
        present.push_back(Platform::MacRomanToUtf8(layers->GetLayerAtIndex(i)->GetName()));
    }
    for (const std::string& name : names) {
        const bool isExact = std::find(present.begin(), present.end(), name) != present.end();
        bool isFound = false;
        for (size_t i = 0; i < present.size(); ++i) {
            if (isExact ? present[i] == name : IsSameInAnyCase(present[i], name)) {
                options.layers.insert(layers->GetLayerAtIndex(static_cast<int>(i)));
                isFound = true;
            }
        }
        if (!isFound) {
            return "there is no layer '" + name + "'; " + ListLayers(present);
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
    if (options.isScalable && answer.picture.size() > CLayoutRenderer::GetMostBytes(options.documentSize)) {
        return MakeFailure(eFailure::kMemory, "the picture would be too large for a document of this size");
    }
    answer.ok = true;
    answer.verb = eVerb::kRender;
    answer.report = nlohmann::ordered_json({{"width", renderer->GetWidth()},
                                            {"height", renderer->GetHeight()},
                                            {"elements", renderer->GetNumberOfElements()},
                                            {"strays", renderer->GetNumberOfStrays()},
                                            {"simplified", renderer->GetNumberOfSimplified()},
                                            {"left_out", renderer->GetNumberOfLeftOut()},
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
    struct stat status = {};
    if (fstat(document, &status) == 0) {
        options.documentSize = static_cast<size_t>(status.st_size);
    }
    options.width = static_cast<int>(wish.width);
    options.height = static_cast<int>(wish.height);
    options.isExact = options.isTransparent = wish.isThumbnail;
    options.isPrinted = wish.kind == ePictureKind::kPDF;
    options.isScalable = wish.kind != ePictureKind::kPNG;
    options.hasLabels = wish.hasLabels;
    options.hasGrid = wish.hasGrid;
    options.trackStyle = UTrackStyles::CodeOf(wish.style);
    const std::string problem = ChooseLayers(layout, wish.layers, options);
    if (!problem.empty()) {
        return MakeFailure(eFailure::kPath, problem);
    }
    return Draw(layout, wish, options);
}

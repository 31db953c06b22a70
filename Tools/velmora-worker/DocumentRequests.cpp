// Requests about one document other than its search attributes. Their answers are JSON, which the host formats.
#include "Checks/CDocumentChecker.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Requests.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Layers/CLayer.h"
#include "Layouts/CLayoutStatistics.h"
#include "Platform/MacRoman.h"
#include "Platform/Streams.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"
#include "UnitLength/URailConstants.h"
#include "protocol/CJSONObject.h"

#include <boost/foreach.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <span>

namespace {
using tJSON = nlohmann::ordered_json;

std::string Text(const char* macRoman)
{
    return Platform::MacRomanToUtf8(macRoman);
}

bool LooksLikeXML(const std::vector<unsigned char>& bytes)
{
    const auto first = std::find_if(bytes.begin(), bytes.end(), [](unsigned char byte) {
        return byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n' && byte != 0xEF && byte != 0xBB &&
               byte != 0xBF;
    });
    return first != bytes.end() && *first == '<';
}

/// Elements that a layout promises, as its own reader sees it. @return false when the file cannot be read
bool ReadPromisedElements(const std::string& path, int& count)
{
    const Platform::CInputFile input(path);
    unsigned char header[8];
    if (input.Get() != nullptr && fread(header, sizeof header, 1, input.Get()) == 1) {
        CLayout layout;
        layout.ReadLayoutParameter(input.Get(), header[7], count);
    }
    return input.Get() != nullptr && !input.HasFailed();
}

/// What a reader makes of a layout. @return false when the file cannot be read
bool ReadLayout(const std::string& path, tJSON& reader)
{
    CBoundLayout layout;
    const int code = layout.Load(path);
    const int elements = static_cast<int>(layout.GetElements().size());
    int promised = 0;
    if (code == CLayout::kCannotOpen || !ReadPromisedElements(path, promised)) {
        return false;
    }
    promised = code == CLayout::kLoaded || code == CLayout::kElementFailed ? promised : 0;
    reader = {{"code", code}, {"elements", elements}, {"lost", std::max(promised - elements, 0)}};
    return true;
}

bool ReadLibrary(const std::string& path, tJSON& reader)
{
    CRailSet library(path);
    const int code = library.Load();
    reader = {{"code", code}, {"elements", library.GetSize()}};
    return code != CRailSet::kCannotOpen;
}

tAnswer MakeLibraryFailure(int code, size_t articles)
{
    if (code == CRailSet::kCannotOpen) {
        return MakeUnreadable();
    }
    tAnswer failed = MakeFailure(eFailure::kLoader, {});
    failed.failure.loaderCode = code;
    switch (code) {
    case CRailSet::kElementFailed:
        failed.failure.element = static_cast<uint32_t>(articles + 1);
        failed.failure.message = "article " + std::to_string(articles + 1) + " is damaged";
        break;
    case CRailSet::kUnsupportedVersion:
        failed.failure.message = "the version of the track library is not supported";
        break;
    default:
        failed.failure.message = "is not a track library";
        break;
    }
    return failed;
}

/// The kind of an element's track, by its first component where that is flexible.
const char* KindOf(CCompositeGeometry* element)
{
    const CBasicGeometry* track = UElementInspector::IsFlexElement(element)          ? element->GetBIGAtIndex(0)
                                  : UElementInspector::IsSingleTrackElement(element) ? element->GetFirstTrackBIG()
                                                                                     : nullptr;
    if (track != nullptr) {
        return UComponentKinds::Find(track->GetType())->name;
    }
    return UElementInspector::IsTrackElement(element) ? "track" : "accessory";
}

tJSON Article(CCompositeGeometry* element)
{
    tJSON article = {{"number", Text(element->GetName())},
                     {"description", Text(element->GetDescription())},
                     {"manufacturer", Text(element->GetManufacturer())},
                     {"library", element->HasRailSetName() ? Text(element->GetRailSetName()) : std::string()},
                     {"kind", KindOf(element)},
                     {"price", element->GetPrice()},
                     {"currency", element->GetCurrency()}};
    const CBasicGeometry* track = element->GetFirstTrackBIG();
    if (track == nullptr) {
        return article;
    }
    if (UElementInspector::IsCurvedTrack(element)) {
        const auto* curve = static_cast<const CCurveBIG*>(track);
        article["radius"] = curve->GetItemRadius();
        article["arc"] = curve->GetItemArcAngle();
    } else if (track->GetType() == kFlexTrackType) {
        article["maximum_length"] = static_cast<const CFlexTrackBIG*>(track)->GetFlexTrackMaxLength();
    } else if (UElementInspector::IsStraightTrack(element)) {
        article["length"] = static_cast<const CStraightBIG*>(track)->GetLength();
    }
    return article;
}

std::string LayerOf(const CCompositeGeometry* element)
{
    return element->GetLayer() != nullptr ? Text(element->GetLayer()->GetName()) : std::string();
}

/// The elements of one article on the layers they are on, in the order of the names' bytes. Of flexible tracks also the
/// length of each piece, mm, as they are cut to length.
tJSON Layers(std::span<CCompositeGeometry* const> elements)
{
    std::map<std::string, tJSON> layers;
    for (CCompositeGeometry* element : elements) {
        tJSON& layer = layers.try_emplace(LayerOf(element), tJSON({{"layer", ""}, {"count", 0}})).first->second;
        layer["count"] = layer["count"].get<int>() + 1;
        if (UElementInspector::HasFlexComponent(element)) {
            layer["lengths"].push_back(element->GetTrackLength());
        }
    }
    tJSON list = tJSON::array();
    for (auto& [name, layer] : layers) {
        layer["layer"] = name;
        list.push_back(std::move(layer));
    }
    return list;
}

/// The articles of a layout by library and number. Numbers repeat between libraries, so each is counted by itself.
void AddParts(const UElementStatistics::tElements& elements, CJSONObject& report)
{
    // By library, name, and place: the names lie in the elements, and the first of a name comes first.
    UElementStatistics::tElements parts;
    std::copy_if(elements.begin(), elements.end(), std::back_inserter(parts),
                 &UElementStatistics::ElementIsDisplayedInPartlist);
    const auto compare = [](const CCompositeGeometry* a, const CCompositeGeometry* b) {
        const auto libraryOf = [](const CCompositeGeometry* element) {
            return element->HasRailSetName() ? element->GetRailSetName() : "";
        };
        const int libraries = std::strcmp(libraryOf(a), libraryOf(b));
        return libraries != 0 ? libraries : std::strcmp(a->GetName(), b->GetName());
    };
    std::stable_sort(parts.begin(), parts.end(),
                     [&compare](const auto* a, const auto* b) { return compare(a, b) < 0; });
    report.BeginList("parts");
    for (auto first = parts.begin(); first != parts.end();) {
        const auto end =
            std::find_if(first, parts.end(), [&](const auto* element) { return compare(*first, element) != 0; });
        tJSON article = Article(*first);
        article["count"] = end - first;
        article["layers"] = Layers({first, end});
        report.Add(article);
        first = end;
    }
    report.EndList();
}
} // namespace

tAnswer AnswerCheck(const std::string& path, int document)
{
    std::vector<unsigned char> bytes;
    if (!ReadWhole(document, bytes)) {
        return MakeUnreadable();
    }
    tJSON reader;
    CJSONObject report;
    switch (CDocumentChecker::GetKind(bytes)) {
    case CDocumentChecker::eDocument::kLayout:
        return !ReadLayout(path, reader)
                   ? MakeUnreadable()
                   : MakeFindingsReport(report, "layout", CDocumentChecker::CheckLayout(bytes), reader);
    case CDocumentChecker::eDocument::kLibrary:
        return !ReadLibrary(path, reader)
                   ? MakeUnreadable()
                   : MakeFindingsReport(report, "track library", CDocumentChecker::CheckLibrary(bytes), reader);
    case CDocumentChecker::eDocument::kUnknown:
        break;
    }
    if (LooksLikeXML(bytes)) {
        return CheckStock(path);
    }
    tAnswer unknown = MakeFailure(eFailure::kLoader, "is no layout, track library or stock file");
    unknown.failure.loaderCode = CLayout::kNoLayout;
    return unknown;
}

tAnswer AnswerParts(const std::string& path, int document)
{
    CBoundLayout layout;
    const int code = layout.Load(path);
    if (code != CLayout::kLoaded) {
        return MakeLoadFailure(code, layout.GetElements().size(), document);
    }
    tWSStatRec kinds;
    layout.GetStatistics()->GetElementStatistics(kinds);
    UElementStatistics::tScaleHistogram scales;
    UElementStatistics::GetModelScaleTrackStatistics(layout.GetElements(), scales);
    tJSON scaleCounts = tJSON::array();
    for (const auto& [scale, count] : scales) {
        scaleCounts.push_back({{"scale", URailConstants::GetModelScaleTxt(scale, true)}, {"count", count}});
    }
    CJSONObject report;
    AddParts(layout.GetElements(), report);
    report.PutAll({{"author", Text(layout.GetAuthor())},
                   {"revision", Text(layout.GetRevision())},
                   {"description", Text(layout.GetDesc())}});
    report.PutAll({{"track_length", layout.GetStatistics()->GetOverallTrackLength()},
                   {"tracks", kinds.tracks},
                   {"accessories", kinds.accessories},
                   {"flexible_tracks", kinds.flexTracks},
                   {"graphics", kinds.graphics},
                   {"texts", kinds.texts},
                   {"scales", scaleCounts}});
    return MakeReport(eVerb::kParts, report);
}

tAnswer AnswerLibrary(const std::string& path, const std::string& fileName)
{
    CRailSet library(path);
    const int code = library.Load();
    if (code != CRailSet::kLoaded) {
        return MakeLibraryFailure(code, library.GetSize());
    }
    const tRailSetParameters& parameters = library.GetParameters();
    CJSONObject report;
    report.PutAll({{"name", Text(ULibraryFiles::GetLibraryName(fileName).c_str())},
                   {"manufacturer", Text(parameters.manufacturer)},
                   {"scale", URailConstants::GetModelScaleTxt(parameters.modelScale, false)},
                   {"content", ULibraryConstants::GetContentTypeText(parameters.contentType)},
                   {"currency", parameters.currency},
                   {"gauge", parameters.gauge},
                   {"prefix", Text(parameters.prefix)},
                   {"created", Text(parameters.creationDate)},
                   {"modified", Text(parameters.modificationDate)}});
    report.BeginList("articles");
    BOOST_FOREACH(CCompositeGeometry* element, library.GetGeometries()) {
        tJSON article = Article(element);
        article.erase("library"); // the file's name, which only the host knows
        report.Add(article);
    }
    report.EndList();
    return MakeReport(eVerb::kLibrary, report);
}

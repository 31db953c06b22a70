// Requests about one document other than its search attributes. Their answers are JSON, which the host formats.
#include "Checks/CDocumentChecker.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Requests.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "Layouts/CLayoutStatistics.h"
#include "Platform/MacRoman.h"
#include "Platform/Streams.h"
#include "Preferences/CVLPreferences.h"
#include "Stock/CStock.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"
#include "UnitLength/URailConstants.h"

#include <boost/foreach.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <unistd.h>

namespace {
using tJSON = nlohmann::ordered_json;

std::string Text(const char* macRoman)
{
    return Platform::MacRomanToUtf8(macRoman);
}

tAnswer Report(eVerb verb, const tJSON& report)
{
    tAnswer answer;
    answer.ok = true;
    answer.verb = verb;
    answer.report = report.dump(-1, ' ', false, tJSON::error_handler_t::replace);
    return answer;
}

/// Reads the whole document. @return false when it cannot be read
bool ReadAll(int document, std::vector<unsigned char>& bytes)
{
    const off_t end = lseek(document, 0, SEEK_END); // the sandbox refuses to look at a file's status
    if (end < 0) {
        return false;
    }
    bytes.resize(static_cast<size_t>(end));
    size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = pread(document, bytes.data() + have, bytes.size() - have, static_cast<off_t>(have));
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        have += static_cast<size_t>(got);
    }
    bytes.resize(have);
    return true;
}

bool LooksLikeXML(const std::vector<unsigned char>& bytes)
{
    const auto first = std::find_if(bytes.begin(), bytes.end(), [](unsigned char byte) {
        return byte != ' ' && byte != '\t' && byte != '\r' && byte != '\n' && byte != 0xEF && byte != 0xBB &&
               byte != 0xBF;
    });
    return first != bytes.end() && *first == '<';
}

/// An entry of a stock file as it stands there, whether or not its library is known.
struct tStockEntry {
    std::string library; ///< UTF-8, as is the number
    std::string productNumber;
    int count;
};

/// Reads the entries of a stock file up to the first that is none.
/// @param problem  what is wrong with it; empty when all is well
/// @return false when the file cannot be read
bool ReadStock(const std::string& path, std::vector<tStockEntry>& entries, std::string& problem)
{
    switch (CStock::ForEachEntry(path.c_str(), [&](const std::string& library, const std::string& number, int count) {
        entries.push_back({library, number, count});
    })) {
    case CStock::eFileState::kWhole:
        break;
    case CStock::eFileState::kUnreadable:
        return false;
    case CStock::eFileState::kNoStock:
        problem = "is not a stock file";
        break;
    case CStock::eFileState::kBadEntry:
        problem = "entry " + std::to_string(entries.size() + 1) + " lacks its product number or its library";
        break;
    }
    return true;
}

tJSON Findings(const std::vector<tFinding>& findings)
{
    tJSON list = tJSON::array();
    for (const tFinding& finding : findings) {
        list.push_back({{"offset", finding.offset},
                        {"key", finding.key},
                        {"element", finding.element},
                        {"component", finding.component},
                        {"damage", finding.kind == tFinding::eKind::kDamage},
                        {"text", finding.text}});
    }
    return list;
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

/// The articles of a layout by library and number. Numbers repeat between libraries, so each is counted by itself.
tJSON PartsOf(const UElementStatistics::tElements& elements)
{
    std::map<std::string, UElementStatistics::tElements> byLibrary;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        byLibrary[element->HasRailSetName() ? element->GetRailSetName() : std::string()].push_back(element);
    }
    tJSON parts = tJSON::array();
    for (const auto& [library, itsElements] : byLibrary) {
        UElementStatistics::tList entries;
        UElementStatistics::GetLibraryElementUsageStatistics(itsElements, entries);
        std::sort(entries.begin(), entries.end(), CCountedCIGProdNrLessThan());
        BOOST_FOREACH(CCountedCIG* entry, entries) {
            tJSON article = Article(entry);
            article["count"] = entry->GetCount();
            parts.push_back(article);
        }
        UCountedElementVectorOperations::EraseAll(entries);
    }
    return parts;
}
} // namespace

tAnswer AnswerCheck(const std::string& path, int document)
{
    std::vector<unsigned char> bytes;
    if (!ReadAll(document, bytes)) {
        return MakeUnreadable();
    }
    tJSON reader;
    switch (CDocumentChecker::GetKind(bytes)) {
    case CDocumentChecker::eDocument::kLayout:
        return !ReadLayout(path, reader)
                   ? MakeUnreadable()
                   : Report(eVerb::kCheck, {{"kind", "layout"},
                                            {"findings", Findings(CDocumentChecker::CheckLayout(bytes))},
                                            {"reader", reader}});
    case CDocumentChecker::eDocument::kLibrary:
        return !ReadLibrary(path, reader)
                   ? MakeUnreadable()
                   : Report(eVerb::kCheck, {{"kind", "track library"},
                                            {"findings", Findings(CDocumentChecker::CheckLibrary(bytes))},
                                            {"reader", reader}});
    case CDocumentChecker::eDocument::kUnknown:
        break;
    }
    std::vector<tStockEntry> entries;
    std::string problem;
    if (LooksLikeXML(bytes)) {
        if (!ReadStock(path, entries, problem)) {
            return MakeUnreadable();
        }
        tJSON findings = tJSON::array();
        if (!problem.empty()) {
            findings.push_back({{"offset", 0},
                                {"key", 0},
                                {"element", entries.size() + 1},
                                {"component", 0},
                                {"damage", true},
                                {"text", problem}});
        }
        return Report(eVerb::kCheck,
                      {{"kind", "stock file"}, {"findings", findings}, {"reader", {{"elements", entries.size()}}}});
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
    return Report(eVerb::kParts, {{"parts", PartsOf(layout.GetElements())},
                                  {"track_length", layout.GetStatistics()->GetOverallTrackLength()},
                                  {"tracks", kinds.tracks},
                                  {"accessories", kinds.accessories},
                                  {"flexible_tracks", kinds.flexTracks},
                                  {"graphics", kinds.graphics},
                                  {"texts", kinds.texts},
                                  {"scales", scaleCounts}});
}

tAnswer AnswerLibrary(const std::string& path, const std::string& fileName)
{
    CRailSet library(path);
    const int code = library.Load();
    if (code != CRailSet::kLoaded) {
        return MakeLibraryFailure(code, library.GetSize());
    }
    const tRailSetParameters& parameters = library.GetParameters();
    tJSON articles = tJSON::array();
    BOOST_FOREACH(CCompositeGeometry* element, library.GetGeometries()) {
        tJSON article = Article(element);
        article.erase("library"); // the file's name, which only the host knows
        articles.push_back(article);
    }
    return Report(eVerb::kLibrary, {{"name", Text(ULibraryFiles::GetLibraryName(fileName).c_str())},
                                    {"manufacturer", Text(parameters.manufacturer)},
                                    {"scale", URailConstants::GetModelScaleTxt(parameters.modelScale, false)},
                                    {"content", ULibraryConstants::GetContentTypeText(parameters.contentType)},
                                    {"currency", parameters.currency},
                                    {"gauge", parameters.gauge},
                                    {"prefix", Text(parameters.prefix)},
                                    {"created", Text(parameters.creationDate)},
                                    {"modified", Text(parameters.modificationDate)},
                                    {"articles", articles}});
}

std::string GetStockFileName()
{
    return Text(CVLPreferences::Instance()->mStockFileName);
}

tAnswer AnswerStock(const std::string& path)
{
    std::vector<tStockEntry> entries;
    std::string problem;
    if (!ReadStock(path, entries, problem)) {
        return MakeUnreadable();
    }
    if (!problem.empty()) {
        tAnswer failed = MakeFailure(eFailure::kLoader, problem);
        failed.failure.loaderCode = CLayout::kNoLayout;
        return failed;
    }
    tJSON items = tJSON::array();
    for (const tStockEntry& entry : entries) {
        items.push_back({{"library", entry.library}, {"number", entry.productNumber}, {"count", entry.count}});
    }
    return Report(eVerb::kStock, {{"items", items}});
}

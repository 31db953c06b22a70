#include "CNarrowStreams.h"
#include "Properties.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "CTaggedFile/BigEndian.h"
#include "CTaggedFile/DocumentHeader.h"
#include "CTaggedFile/RecordTable.h"
#include "Checks/CDocumentChecker.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"
#include "Platform/Report.h"
#include "TrackLibraries/CRailSet.h"
#include "support/ScratchFile.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace {
/// Keys of where elements lie, x and y, and components in them.
constexpr int kPlaces[] = {200, 201, 301, 302};
/// The narrow windows that an input's length decides among are smaller than this, bytes; 0 is none.
constexpr size_t kNarrowWindows = 100;
/// Cutting a place to seven decimals, twice, mm; and what far ones lose to the numbers of the machine.
constexpr double kPlaceTolerance = 1e-6;
constexpr double kRelativeTolerance = 1e-15;

/// Collects what the core has to say while this lives, but for its alerts.
class CMessages {
public:
    explicit CMessages(std::string& text)
    {
        Platform::SetReportObserver(
            [](void* messages, Platform::eReportLevel, const char* message) {
                static_cast<std::string*>(messages)->append(message).append("\n");
            },
            &text);
    }
    ~CMessages() { Platform::SetReportObserver(nullptr, nullptr); }
    CMessages(const CMessages&) = delete;
    CMessages& operator=(const CMessages&) = delete;
};

/// What became of a document: code and size, what its load had to say, and what its save is.
struct tOutcome {
    int code = 0;
    size_t elements = 0;
    std::string messages;
    std::string saved;
};

/// Bytes and key of the next record of a document that was saved, or of a header, whose key is 0.
std::pair<size_t, int> NextRecord(std::string_view document, bool isFirst)
{
    if (isFirst || document.starts_with("RCig")) {
        return {tDocumentHeader::kSize, 0};
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(document.data());
    return {kRecordHeader + BigEndian::Unsigned16(bytes + 2), BigEndian::Unsigned16(bytes)};
}

bool IsAmong(int key, std::span<const int> keys)
{
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/// A document that was saved, without the records of these keys.
std::string Without(std::string_view document, std::initializer_list<std::span<const int>> keys)
{
    std::string rest;
    while (document.size() >= kRecordHeader) {
        const auto [size, key] = NextRecord(document, rest.empty());
        if (std::none_of(keys.begin(), keys.end(), [own = key](const auto& some) { return IsAmong(own, some); })) {
            rest += document.substr(0, size);
        }
        document.remove_prefix(std::min(size, document.size()));
    }
    return rest;
}

/// Where a component lies in its layout, x or y.
struct tPlace {
    double at;    ///< no number where a document cannot hold it
    double reach; ///< of the numbers that make it up
};

/// The places of a document that was saved. A load moves components in their element, and the element as far the other
/// way, so these stay.
std::vector<tPlace> Places(std::string_view document)
{
    std::vector<tPlace> places;
    double element[2] = {};
    for (bool isFirst = true; document.size() >= kRecordHeader; isFirst = false) {
        const auto [size, key] = NextRecord(document, isFirst);
        if (IsAmong(key, kPlaces)) {
            double value =
                BigEndian::FixedPoint(reinterpret_cast<const unsigned char*>(document.data()) + kRecordHeader);
            value = std::fabs(value) < INT_MAX ? value : NAN;
            if (key < kPlaces[2]) {
                element[key - kPlaces[0]] = value;
            } else {
                const double base = element[key - kPlaces[2]];
                places.push_back({base + value, std::max(std::fabs(base), std::fabs(value))});
            }
        }
        document.remove_prefix(std::min(size, document.size()));
    }
    return places;
}

bool AreSame(const std::vector<tPlace>& one, const std::vector<tPlace>& other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), [](const tPlace& a, const tPlace& b) {
        const double tolerance = kPlaceTolerance + kRelativeTolerance * std::max(a.reach, b.reach);
        return !(std::fabs(a.at - b.at) > tolerance); // nor is what is no number
    });
}

std::string Hex(std::string_view bytes)
{
    std::string text;
    for (const char byte : bytes) {
        char digits[4];
        snprintf(digits, sizeof digits, "%02x ", static_cast<unsigned char>(byte));
        text += digits;
    }
    return text;
}

/// Says in which record two documents begin to differ.
std::string Difference(const std::string& what, std::string_view one, std::string_view other)
{
    for (bool isFirst = true; !one.empty() || !other.empty(); isFirst = false) {
        if (one.size() < kRecordHeader || other.size() < kRecordHeader) {
            return what + ": one is longer";
        }
        const auto [size, key] = NextRecord(one, isFirst);
        const auto [otherSize, otherKey] = NextRecord(other, isFirst);
        if (one.substr(0, size) != other.substr(0, otherSize)) {
            return what + ": record " + std::to_string(key) + ", " + Hex(one.substr(0, size)) + "and " +
                   std::to_string(otherKey) + ", " + Hex(other.substr(0, otherSize));
        }
        one.remove_prefix(std::min(size, one.size()));
        other.remove_prefix(std::min(otherSize, other.size()));
    }
    return {};
}

void Count(const std::vector<CCompositeGeometry*>& elements)
{
    UElementStatistics::GetContentSummaryAsString(elements);
    for (const auto get :
         {&UElementStatistics::GetLibraryElementUsageStatistics, &UElementStatistics::GetRailsetUsageStatistics}) {
        UElementStatistics::tList list;
        get(elements, list);
        for (const CCountedCIG* entry : list) {
            delete entry;
        }
    }
    tWSStatRec record;
    UElementStatistics::GetItemTypeStatistics(elements, record);
    UElementStatistics::tScaleHistogram histogram;
    UElementStatistics::GetModelScaleTrackStatistics(elements, histogram);
}

/// The two kinds of documents, as far as they differ.
struct tLayoutKind {
    static constexpr int kTimes[] = {402, 403}; ///< keys of what depends on the time

    static std::vector<tFinding> Check(std::span<const unsigned char> bytes)
    {
        return CDocumentChecker::CheckLayout(bytes);
    }
    /// Loads the file and replaces it by what it was taken for. @return false when it was not saved
    static bool Reload(const CScratchFile& file, tOutcome& outcome)
    {
        CBoundLayout layout;
        {
            const CMessages messages(outcome.messages);
            outcome.code = layout.Load(file.Path());
        }
        outcome.elements = layout.GetElements().size();
        Count(layout.GetElements());
        const std::string path = file.Path();
        return layout.Save(&path);
    }
};

struct tLibraryKind {
    static constexpr int kTimes[] = {115};

    static std::vector<tFinding> Check(std::span<const unsigned char> bytes)
    {
        return CDocumentChecker::CheckLibrary(bytes);
    }
    static bool Reload(const CScratchFile& file, tOutcome& outcome)
    {
        CRailSet library(file.Path());
        {
            const CMessages messages(outcome.messages);
            outcome.code = library.Load();
        }
        outcome.elements = library.GetSize();
        Count(library.GetGeometries());
        return library.Save();
    }
};

/// What a check finds.
/// @param oddities  also what is well-formed: two layers whose names fill their field may bear the same
template <typename tKind>
std::string Describe(std::string_view bytes, bool oddities)
{
    std::string text;
    for (const tFinding& finding : tKind::Check({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()})) {
        if (oddities || finding.kind == tFinding::eKind::kDamage) {
            text += std::to_string(finding.offset) + ": " + finding.text + "\n";
        }
    }
    return text;
}

template <typename tKind>
std::optional<tOutcome> Take(std::string_view bytes)
{
    static CScratchFile sFile; // one for all, since a library is named after its file
    sFile.Set(bytes);
    tOutcome outcome;
    if (!tKind::Reload(sFile, outcome)) {
        return std::nullopt;
    }
    outcome.saved = sFile.Get();
    return outcome;
}

template <typename tKind>
std::string Document(std::string_view bytes)
{
    const std::string findings = Describe<tKind>(bytes, true);
    const std::optional<tOutcome> loaded = Take<tKind>(bytes);
    std::optional<tOutcome> slowly;
    {
        const CNarrowStreams narrow(bytes.size() % kNarrowWindows);
        slowly = Take<tKind>(bytes);
        if (narrow.GetCount() == 0) {
            return "no stream with a narrow window";
        }
    }
    if (!loaded || !slowly) {
        return "not saved";
    }
    if (loaded->code != slowly->code || loaded->elements != slowly->elements || loaded->messages != slowly->messages) {
        return "with a wide window code " + std::to_string(loaded->code) + "; with a narrow one " +
               std::to_string(slowly->code) + "\n" + loaded->messages + "--\n" + slowly->messages;
    }
    std::string difference =
        Difference("saved with a wide and a narrow window", Without(loaded->saved, {tKind::kTimes}),
                   Without(slowly->saved, {tKind::kTimes}));
    if (!difference.empty()) {
        return difference;
    }
    if (findings.empty() && (loaded->code != 0 || !loaded->messages.empty())) {
        return "whole, but the load says " + std::to_string(loaded->code) + "\n" + loaded->messages;
    }
    const std::string ownFindings = Describe<tKind>(loaded->saved, false);
    if (!ownFindings.empty()) {
        return "saved, but not whole:\n" + ownFindings;
    }
    const std::optional<tOutcome> again = Take<tKind>(loaded->saved);
    if (!again || again->code != 0 || again->elements != loaded->elements) {
        return "saved, but not loaded again";
    }
    difference = Difference("saved and saved again", Without(loaded->saved, {tKind::kTimes, kPlaces}),
                            Without(again->saved, {tKind::kTimes, kPlaces}));
    if (difference.empty() && !AreSame(Places(loaded->saved), Places(again->saved))) {
        return "saved and saved again, and something is elsewhere";
    }
    return difference;
}
} // namespace

std::string Properties::Layout(std::string_view bytes)
{
    return Document<tLayoutKind>(bytes);
}

std::string Properties::Library(std::string_view bytes)
{
    return Document<tLibraryKind>(bytes);
}

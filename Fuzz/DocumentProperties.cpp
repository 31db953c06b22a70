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
#include <cstdio>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace {
/// Where elements and components lie.
constexpr int kPlaces[] = {200, 201, 301, 302};

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
    bool hasTurnedText = false;
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

/// A document that was saved, without the records of these keys and, if they are not wanted, the places.
std::string Without(std::string_view document, std::span<const int> keys, bool places)
{
    const auto isAmong = [](int key, std::span<const int> some) {
        return std::find(some.begin(), some.end(), key) != some.end();
    };
    std::string rest;
    while (document.size() >= kRecordHeader) {
        const auto [size, key] = NextRecord(document, rest.empty());
        if (!isAmong(key, keys) && (places || !isAmong(key, kPlaces))) {
            rest += document.substr(0, size);
        }
        document.remove_prefix(std::min(size, document.size()));
    }
    return rest;
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

/// A text's box does not follow its offset; in a turned element each load shifts offset and position against each
/// other.
bool HasTurnedText(const std::vector<CCompositeGeometry*>& elements)
{
    return std::any_of(elements.begin(), elements.end(), [](const CCompositeGeometry* element) {
        const auto& components = element->GetComponents();
        return element->GetAngle() != 0.0 &&
               std::any_of(components.begin(), components.end(),
                           [](const auto* component) { return component->GetType() == kTextType; });
    });
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
    static constexpr bool kStaysInPlace = true;

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
        outcome.hasTurnedText = HasTurnedText(layout.GetElements());
        Count(layout.GetElements());
        const std::string path = file.Path();
        return layout.Save(&path);
    }
};

struct tLibraryKind {
    static constexpr int kTimes[] = {115};
    /// Elements are aligned before they take over the widths of the library, and with these at the next load.
    static constexpr bool kStaysInPlace = false;

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
        outcome.hasTurnedText = HasTurnedText(library.GetGeometries());
        Count(library.GetGeometries());
        return library.Save();
    }
};

template <typename tKind>
std::string Describe(std::string_view bytes)
{
    std::string text;
    for (const tFinding& finding : tKind::Check({reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()})) {
        text += std::to_string(finding.offset) + ": " + finding.text + "\n";
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
    const std::string findings = Describe<tKind>(bytes);
    const std::optional<tOutcome> loaded = Take<tKind>(bytes);
    std::optional<tOutcome> slowly;
    {
        const CNarrowStreams narrow;
        slowly = Take<tKind>(bytes);
        if (narrow.GetCount() == 0) {
            return "no stream without a window";
        }
    }
    if (!loaded || !slowly) {
        return "not saved";
    }
    if (loaded->code != slowly->code || loaded->elements != slowly->elements || loaded->messages != slowly->messages) {
        return "with a window code " + std::to_string(loaded->code) + ", without " + std::to_string(slowly->code) +
               "\n" + loaded->messages + "--\n" + slowly->messages;
    }
    std::string difference = Difference("saved with and without a window", Without(loaded->saved, tKind::kTimes, true),
                                        Without(slowly->saved, tKind::kTimes, true));
    if (!difference.empty()) {
        return difference;
    }
    if (findings.empty() && (loaded->code != 0 || !loaded->messages.empty())) {
        return "whole, but the load says " + std::to_string(loaded->code) + "\n" + loaded->messages;
    }
    const std::string ownFindings = Describe<tKind>(loaded->saved);
    if (!ownFindings.empty()) {
        return "saved, but not whole:\n" + ownFindings;
    }
    std::optional<tOutcome> before = loaded;
    for (bool isSettled = tKind::kStaysInPlace;; isSettled = true) {
        std::optional<tOutcome> again = Take<tKind>(before->saved);
        if (!again || again->code != 0 || again->elements != loaded->elements) {
            return "saved, but not loaded again";
        }
        const bool places = isSettled && !loaded->hasTurnedText;
        difference = Difference("saved and saved again", Without(before->saved, tKind::kTimes, places),
                                Without(again->saved, tKind::kTimes, places));
        if (!difference.empty() || isSettled) {
            return difference;
        }
        before = std::move(again);
    }
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

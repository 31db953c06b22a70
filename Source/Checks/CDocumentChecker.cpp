#include "Checks/CDocumentChecker.h"

#include "CTaggedFile/DocumentHeader.h"
#include "Checks/CElementChecker.h"
#include "Checks/CRecordChecker.h"
#include "Formats/LayoutFormat.h"
#include "Formats/LibraryFormat.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace {
using namespace LayoutFormat;

std::string Count(long long count)
{
    return std::to_string(count);
}

/// Reports what stands behind the end of a document. Whole records there may be those of a later program.
void ReportRest(CRecordChecker& records, const std::string& what)
{
    if (!records.IsLost() && records.GetBytesLeft() > 0) {
        const bool isPassedOver = records.HasRecordsOnly();
        records.Report(records.GetPosition(), 0,
                       Count(static_cast<long long>(records.GetBytesLeft())) + " bytes behind the end of the " + what +
                           (isPassedOver ? "; readers pass over them" : ""),
                       isPassedOver ? tFinding::eKind::kOddity : tFinding::eKind::kDamage);
    }
}

/// The walk over one layout.
class CLayoutWalk {
public:
    CLayoutWalk(std::span<const unsigned char> bytes, std::vector<tFinding>& findings)
        : mRecords(bytes, findings), mElements(mRecords, &mLayers)
    {}

    void Check()
    {
        int version = CheckHeader();
        const auto oldest = CRecordChecker::Since(kSettings, 0);
        const auto withLayers = CRecordChecker::Since(kSettings, kFirstVersionWithLayers);
        const auto current = CRecordChecker::Since(kSettings, kCurrentVersion);
        mRecords.Expect(oldest, {withLayers[0].key, current[0].key, kNumLayers.key, kNumElements.key});
        ExpectVersion(version, kFirstVersionWithLayers, withLayers[0].key);
        if (version >= kFirstVersionWithLayers) {
            mRecords.Expect(withLayers, {current[0].key, kNumLayers.key, kNumElements.key});
            ExpectVersion(version, kCurrentVersion, current[0].key);
            if (version >= kCurrentVersion) {
                mRecords.Expect(current, {kNumLayers.key, kNumElements.key});
            }
            CheckLayers();
        }
        if (mRecords.ExpectOne(kNumElements, {CElementChecker::kHeaderKey, kNumGroupEntries.key})) {
            mNumElements = mRecords.DataAsInt();
            mElements.CheckElements(mNumElements, kNumGroupEntries.key, mRecords.GetRecordOffset(), kNumElements.key);
        }
        CheckGroups();
        ReportRest(mRecords, "layout");
    }

private:
    int CheckHeader()
    {
        if (mRecords.GetBytesLeft() < tDocumentHeader::kSize) {
            mRecords.ReportEnd(0, "the header of a layout");
            return 0;
        }
        if (mRecords.PeekWord() != kMagic) {
            mRecords.Report(0, 0, "the file does not begin like a layout");
        }
        const int version = static_cast<int32_t>(mRecords.PeekWord(4));
        if (version < kOldestVersion || version > kCurrentVersion) {
            mRecords.Report(4, 0, "layout version " + Count(version) + " is not known");
        }
        mRecords.Skip(tDocumentHeader::kSize);
        return version;
    }

    /// Takes a version for the one that the next record belongs to: then the header is what is wrong.
    void ExpectVersion(int& version, int first, int key)
    {
        if (version < first && mRecords.PeekKey() == key) {
            mRecords.Report(4, 0,
                            "the header names version " + Count(version) + ", the records are those of version " +
                                Count(first));
            version = first;
        }
    }

    void CheckLayers()
    {
        const bool isCounted = mRecords.ExpectOne(kNumLayers, {kLayerName.key, kNumElements.key});
        const int count = isCounted ? mRecords.DataAsInt() : 0;
        const size_t countOffset = mRecords.GetRecordOffset();
        int number = 0;
        while (!mRecords.IsLost() && mRecords.PeekKey() != kNumElements.key &&
               (number < count || mRecords.PeekKey() == kLayerName.key)) {
            ++number;
            if (mRecords.ExpectOne(kLayerName, {kLayerState[0].key, kLayerState[1].key, kNumElements.key}) &&
                !mLayers.insert(mRecords.DataAsText()).second) {
                mRecords.Report(mRecords.GetRecordOffset(), kLayerName.key,
                                "the layer has the name of another; readers add a star", tFinding::eKind::kOddity);
            }
            mRecords.Expect(kLayerState, {kLayerName.key, kNumElements.key});
        }
        if (isCounted) {
            mRecords.CheckCount(countOffset, kNumLayers.key, count, number, "layers");
        }
    }

    void CheckGroups()
    {
        if (!mRecords.ExpectOne(kNumGroupEntries, {kGroupEntry.key})) {
            return;
        }
        const size_t countOffset = mRecords.GetRecordOffset();
        const int count = mRecords.DataAsInt();
        std::vector<int32_t> entries;
        std::vector<size_t> offsets;
        while (!mRecords.IsLost() && mRecords.GetBytesLeft() > 0 &&
               (static_cast<long long>(entries.size()) < count || mRecords.PeekKey() == kGroupEntry.key)) {
            if (mRecords.ExpectOne(kGroupEntry, {})) {
                entries.push_back(mRecords.DataAsInt());
                offsets.push_back(mRecords.GetRecordOffset());
            }
        }
        mRecords.CheckCount(countOffset, kNumGroupEntries.key, count, static_cast<long long>(entries.size()),
                            "group entries");
        if (!mRecords.IsLost() && count == static_cast<long long>(entries.size())) {
            CheckGroupList(entries, offsets);
        }
    }

    /// What the entries say: number of groups; for each its parent, its elements and its member groups.
    void CheckGroupList(const std::vector<int32_t>& entries, const std::vector<size_t>& offsets)
    {
        size_t at = 0;
        const auto next = [&](const char* what) {
            if (at >= entries.size()) {
                mRecords.Report(offsets.back(), kGroupEntry.key, std::string("the group entries end before ") + what);
                return -1;
            }
            return entries[at++];
        };
        const auto checkIndex = [&](int32_t index, long long limit, const char* what) {
            if (index < 0 || index >= limit) {
                mRecords.Report(offsets[at - 1], kGroupEntry.key,
                                std::string("no ") + what + " has the index " + Count(index), tFinding::eKind::kOddity);
            }
        };
        if (entries.empty()) {
            return;
        }
        const int32_t groups = entries[at++];
        std::vector<tLink> links;
        std::unordered_set<int32_t> grouped;
        int32_t group = 0;
        for (; group < groups && at < entries.size() && !mRecords.IsLost(); ++group) {
            const int32_t parent = next("a group's parent");
            if (parent >= 0) {
                checkIndex(parent, groups, "group");
                links.push_back({group, parent, offsets[at - 1]});
            }
            for (const bool isElement : {true, false}) {
                const int32_t members = next(isElement ? "a group's elements" : "a group's member groups");
                for (int32_t i = 0; i < members && at < entries.size() && !mRecords.IsLost(); ++i) {
                    const int32_t member = entries[at++];
                    checkIndex(member, isElement ? mNumElements : groups, isElement ? "element" : "group");
                    if (!isElement) {
                        links.push_back({member, group, offsets[at - 1]});
                    } else if (!grouped.insert(member).second) {
                        mRecords.Report(offsets[at - 1], kGroupEntry.key, "the element is in a group already",
                                        tFinding::eKind::kOddity);
                    }
                }
            }
        }
        CheckLinks(links, group);
        if (groups > group) {
            mRecords.CheckCount(offsets.front(), kGroupEntry.key, groups, group, "groups");
        }
        if (at < entries.size()) {
            mRecords.Report(offsets[at], kGroupEntry.key,
                            Count(static_cast<long long>(entries.size() - at)) + " group entries too many");
        }
    }

    /// That a group lies in another, and where the document says so.
    struct tLink {
        int32_t child;
        int32_t parent;
        size_t offset;
    };

    /// Whether the links make trees; taken in the order in which readers take them, who pass over what contradicts
    /// one before.
    void CheckLinks(const std::vector<tLink>& links, int32_t groups)
    {
        constexpr int32_t kNone = -1;
        std::vector<int32_t> parents(static_cast<size_t>(groups), kNone);
        std::vector<int32_t> above = parents; // any group above each, so that long chains are walked once
        const auto rootOf = [&above](int32_t group) {
            while (above[static_cast<size_t>(group)] != kNone) {
                int32_t& next = above[static_cast<size_t>(group)];
                if (above[static_cast<size_t>(next)] != kNone) {
                    next = above[static_cast<size_t>(next)];
                }
                group = next;
            }
            return group;
        };
        for (const tLink& link : links) {
            if (std::min(link.child, link.parent) < 0 || std::max(link.child, link.parent) >= groups ||
                parents[static_cast<size_t>(link.child)] == link.parent) {
                continue;
            }
            const bool hasParent = parents[static_cast<size_t>(link.child)] != kNone;
            if (hasParent || rootOf(link.parent) == link.child) {
                mRecords.Report(link.offset, kGroupEntry.key,
                                hasParent ? "the group lies in another one already" : "the group would lie in itself",
                                tFinding::eKind::kOddity);
                continue;
            }
            parents[static_cast<size_t>(link.child)] = above[static_cast<size_t>(link.child)] = link.parent;
        }
    }

    CRecordChecker mRecords;
    std::unordered_set<std::string> mLayers;
    CElementChecker mElements;
    int mNumElements = 0;
};
} // namespace

CDocumentChecker::eDocument CDocumentChecker::GetKind(std::span<const unsigned char> bytes)
{
    std::vector<tFinding> none;
    const uint32_t magic = CRecordChecker(bytes, none).PeekWord();
    return magic == kMagic                  ? eDocument::kLayout
           : magic == LibraryFormat::kMagic ? eDocument::kLibrary
                                            : eDocument::kUnknown;
}

std::vector<tFinding> CDocumentChecker::CheckLayout(std::span<const unsigned char> bytes)
{
    std::vector<tFinding> findings;
    CLayoutWalk(bytes, findings).Check();
    return findings;
}

std::vector<tFinding> CDocumentChecker::CheckLibrary(std::span<const unsigned char> bytes)
{
    std::vector<tFinding> findings;
    CRecordChecker records(bytes, findings);
    if (bytes.size() < tDocumentHeader::kSize) {
        records.ReportEnd(0, "the header of a track library");
        return findings;
    }
    if (records.PeekWord() != LibraryFormat::kMagic) {
        records.Report(0, 0, "the file does not begin like a track library");
    }
    if (records.PeekWord(4) != LibraryFormat::kVersion) {
        records.Report(4, 0, "library version " + Count(records.PeekWord(4)) + " is not known");
    }
    records.Skip(tDocumentHeader::kSize);
    int count = 0;
    size_t countOffset = tDocumentHeader::kSize;
    if (records.ExpectOne(LibraryFormat::kNumElements, {LibraryFormat::kCodes[0].key})) {
        count = records.DataAsInt();
        countOffset = records.GetRecordOffset();
    }
    records.Expect(CRecordChecker::Join({LibraryFormat::kCodes, LibraryFormat::kWidths, LibraryFormat::kTexts}),
                   {CElementChecker::kHeaderKey});
    CElementChecker(records, nullptr).CheckElements(count, 0, countOffset, LibraryFormat::kNumElements.key);
    ReportRest(records, "library");
    return findings;
}

#include "Checks/CDocumentChecker.h"

#include "Checks/CElementChecker.h"
#include "Checks/CRecordChecker.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>

namespace {
using enum eRecordType;

constexpr uint32_t kLayoutMagic = 0x576B5374;  // "WkSt"
constexpr uint32_t kLibraryMagic = 0x52536574; // "RSet"
constexpr size_t kHeaderSize = 8;
constexpr int kOldestLayout = 3;
constexpr int kFirstLayoutWithLayers = 4;
constexpr int kCurrentLayout = 5;
constexpr uint32_t kLibraryVersion = 2;

constexpr tRecordRule kLayoutRules[] = {{400, kText, 128, "author"},
                                        {401, kText, 256, "private author"},
                                        {402, kText, 32, "creation date"},
                                        {403, kText, 32, "modification date"},
                                        {404, kText, 4096, "description"},
                                        {405, kText, 1024, "free text"},
                                        {406, kText, 128, "short free text"},
                                        {407, kText, 32, "revision"},
                                        {408, kChar, 0, "setting"},
                                        {409, kInt, 0, "setting"},
                                        {410, kInt, 0, "element labels"},
                                        {411, kInt, 0, "track style"},
                                        {412, kInt, 0, "colour scheme"},
                                        {413, kInt, 0, "setting"},
                                        {414, kInt, 0, "grid spacing"},
                                        {415, kInt, 0, "setting"},
                                        {416, kBool, 0, "show grid"},
                                        {417, kInt, 0, "zoom"},
                                        {418, kInt, 0, "workspace width"},
                                        {419, kInt, 0, "workspace height"},
                                        {420, kRaw, 6, "colour"},
                                        {421, kRaw, 8, "rectangle"},
                                        {422, kRaw, 20, "view parameters"}};
constexpr tRecordRule kRulesFrom4[] = {{426, kBool, 0, "3D terrain"}, {427, kBool, 0, "3D tracks only"}};
constexpr tRecordRule kRulesFrom5[] = {{428, kInt, 0, "setting"}, {429, kInt, 0, "setting"}, {430, kBool, 0, "flag"}};
constexpr tRecordRule kLayerCount = {500, kInt, 0, "number of layers"};
constexpr tRecordRule kLayerName = {501, kText, 64, "layer name"};
constexpr tRecordRule kLayerState[] = {{502, kBool, 0, "layer locked"}, {503, kBool, 0, "layer visible"}};
constexpr tRecordRule kElementCount = {423, kInt, 0, "number of elements"};
constexpr tRecordRule kGroupCount = {424, kInt, 0, "number of group entries"};
constexpr tRecordRule kGroupEntry = {425, kInt, 0, "group entry"};

constexpr tRecordRule kLibraryCount = {100, kInt, 0, "number of elements"};
constexpr tRecordRule kLibraryRules[] = {
    {101, kInt, 0, "model scale"},  {102, kInt, 0, "content type"},    {103, kInt, 0, "currency"},
    {104, kInt, 0, "gauge"},        {105, kInt, 0, "trackbed width"},  {106, kInt, 0, "rail width"},
    {107, kText, 128, "free text"}, {108, kText, 128, "manufacturer"}, {109, kText, 256, "free text"},
    {110, kText, 256, "free text"}, {111, kText, 8, "prefix"},         {112, kText, 512, "free text"},
    {113, kText, 256, "free text"}, {114, kText, 32, "creation date"}, {115, kText, 32, "modification date"}};

std::string Count(long long count)
{
    return std::to_string(count);
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
        mRecords.Expect(kLayoutRules, {426, 428, 500, 423});
        ExpectVersion(version, kFirstLayoutWithLayers, kRulesFrom4[0].key);
        if (version >= kFirstLayoutWithLayers) {
            mRecords.Expect(kRulesFrom4, {428, 500, 423});
            ExpectVersion(version, kCurrentLayout, kRulesFrom5[0].key);
            if (version >= kCurrentLayout) {
                mRecords.Expect(kRulesFrom5, {500, 423});
            }
            CheckLayers();
        }
        if (mRecords.ExpectOne(kElementCount, {CElementChecker::kElementMagic >> 16, kGroupCount.key})) {
            mNumElements = mRecords.DataAsInt();
            mElements.CheckElements(mNumElements, kGroupCount.key, mRecords.GetRecordOffset(), kElementCount.key);
        }
        CheckGroups();
        if (!mRecords.IsLost() && mRecords.GetBytesLeft() > 0) {
            mRecords.Report(mRecords.GetPosition(), 0,
                            Count(static_cast<long long>(mRecords.GetBytesLeft())) +
                                " bytes behind the end of the layout");
        }
    }

private:
    int CheckHeader()
    {
        if (mRecords.GetBytesLeft() < kHeaderSize) {
            mRecords.ReportEnd(0, "the header of a layout");
            return 0;
        }
        if (mRecords.PeekWord() != kLayoutMagic) {
            mRecords.Report(0, 0, "the file does not begin like a layout");
        }
        const int version = static_cast<int32_t>(mRecords.PeekWord(4));
        if (version < kOldestLayout || version > kCurrentLayout) {
            mRecords.Report(4, 0, "layout version " + Count(version) + " is not known");
        }
        mRecords.Skip(kHeaderSize);
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
        const bool isCounted = mRecords.ExpectOne(kLayerCount, {kLayerName.key, kElementCount.key});
        const int count = isCounted ? mRecords.DataAsInt() : 0;
        const size_t countOffset = mRecords.GetRecordOffset();
        int number = 0;
        while (!mRecords.IsLost() && mRecords.PeekKey() != kElementCount.key &&
               (number < count || mRecords.PeekKey() == kLayerName.key)) {
            ++number;
            if (mRecords.ExpectOne(kLayerName, {502, 503, kElementCount.key}) &&
                !mLayers.insert(mRecords.DataAsText()).second) {
                mRecords.Report(mRecords.GetRecordOffset(), kLayerName.key,
                                "the layer has the name of another; readers add a star", tFinding::eKind::kOddity);
            }
            mRecords.Expect(kLayerState, {kLayerName.key, kElementCount.key});
        }
        if (isCounted) {
            mRecords.CheckCount(countOffset, kLayerCount.key, count, number, "layers");
        }
    }

    void CheckGroups()
    {
        if (!mRecords.ExpectOne(kGroupCount, {kGroupEntry.key})) {
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
        mRecords.CheckCount(countOffset, kGroupCount.key, count, static_cast<long long>(entries.size()),
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
        for (int32_t group = 0; group < groups && at < entries.size() && !mRecords.IsLost(); ++group) {
            const int32_t parent = next("a group's parent");
            if (parent >= 0) {
                checkIndex(parent, groups, "group");
            }
            for (const bool isElement : {true, false}) {
                const int32_t members = next(isElement ? "a group's elements" : "a group's member groups");
                for (int32_t i = 0; i < members && at < entries.size() && !mRecords.IsLost(); ++i) {
                    checkIndex(entries[at++], isElement ? mNumElements : groups, isElement ? "element" : "group");
                }
            }
        }
        if (at < entries.size()) {
            mRecords.Report(offsets[at], kGroupEntry.key,
                            Count(static_cast<long long>(entries.size() - at)) + " group entries too many");
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
    return magic == kLayoutMagic    ? eDocument::kLayout
           : magic == kLibraryMagic ? eDocument::kLibrary
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
    if (bytes.size() < kHeaderSize) {
        records.ReportEnd(0, "the header of a track library");
        return findings;
    }
    if (records.PeekWord() != kLibraryMagic) {
        records.Report(0, 0, "the file does not begin like a track library");
    }
    if (records.PeekWord(4) != kLibraryVersion) {
        records.Report(4, 0, "library version " + Count(records.PeekWord(4)) + " is not known");
    }
    records.Skip(kHeaderSize);
    int count = 0;
    size_t countOffset = kHeaderSize;
    if (records.ExpectOne(kLibraryCount, {101})) {
        count = records.DataAsInt();
        countOffset = records.GetRecordOffset();
    }
    records.Expect(kLibraryRules, {CElementChecker::kElementMagic >> 16});
    CElementChecker(records, nullptr).CheckElements(count, 0, countOffset, kLibraryCount.key);
    if (!records.IsLost() && records.GetBytesLeft() > 0) {
        records.Report(records.GetPosition(), 0,
                       Count(static_cast<long long>(records.GetBytesLeft())) + " bytes behind the end of the library");
    }
    return findings;
}

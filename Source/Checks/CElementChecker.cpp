#include "Checks/CElementChecker.h"

#include "BuildingBlocks/BasicGeometries/UComponentKinds.h"
#include "CTaggedFile/DocumentHeader.h"
#include "Formats/ComponentFormat.h"
#include "Formats/LayoutFormat.h"

#include <iterator>
#include <span>

namespace {
using namespace ComponentFormat;
using namespace ElementFormat;

std::string Count(long long count)
{
    return std::to_string(count);
}
} // namespace

void CElementChecker::CheckElements(int count, int endKey, size_t countOffset, int countKey)
{
    mEndKey = endKey;
    int number = 0;
    while (!mRecords.IsLost()) {
        mRecords.SetElement(number + 1);
        if (!IsAtElement()) {
            const bool atEnd = endKey == 0 ? mRecords.GetBytesLeft() == 0 : mRecords.PeekKey() == endKey;
            if (atEnd || number >= count) {
                break;
            }
            if (mRecords.GetBytesLeft() < tDocumentHeader::kSize) {
                mRecords.ReportEnd(0, "element " + Count(number + 1) + " of " + Count(count));
                break;
            }
            mRecords.Report(mRecords.GetPosition(), 0, "the header of element " + Count(number + 1) + " was expected");
            // One damaged byte in a header leaves the records behind it whole.
            if (mRecords.PeekWord(tDocumentHeader::kSize) >> 16 != kTexts[0].key) {
                mRecords.SeekWord(kMagic);
                continue;
            }
        } else if (mRecords.GetBytesLeft() < tDocumentHeader::kSize) {
            mRecords.ReportEnd(0, "the header of element " + Count(number + 1));
            break;
        }
        ++number;
        CheckElement();
    }
    mRecords.SetElement(0);
    mRecords.CheckCount(countOffset, countKey, count, number, "elements");
}

void CElementChecker::CheckElement()
{
    static const std::vector<tRecord> kAttributes = CRecordChecker::Join({kTexts, CRecordChecker::Since(kNumbers, 0)});
    static const std::vector<tRecord> kHeights =
        CRecordChecker::Join({CRecordChecker::Since(kNumbers, kCurrentVersion), kGrade});
    uint32_t version = mRecords.PeekWord(4);
    const size_t versionOffset = mRecords.GetPosition() + 4;
    if (version != kOldestVersion && version != kCurrentVersion) {
        mRecords.Report(versionOffset, 0, "element version " + Count(version) + " is not known");
    }
    mRecords.Skip(tDocumentHeader::kSize);
    mRecords.Expect(kAttributes, {kPlacement[0].key, kLayerName.key, kNumComponents.key});
    if (version == kOldestVersion && mRecords.PeekKey() == kHeights[0].key) {
        mRecords.Report(versionOffset, 0, "the header names version 3, the records are those of version 4");
        version = kCurrentVersion;
    }
    if (version != kOldestVersion) {
        mRecords.Expect(kHeights, {kPlacement[0].key, kLayerName.key, kNumComponents.key});
    }
    mRecords.Expect(kPlacement, {kLayerName.key, kNumComponents.key});
    if (version != kOldestVersion && mRecords.ExpectOne(kLayerName, {kNumComponents.key}) && mLayers != nullptr) {
        const std::string layer = mRecords.DataAsText();
        if (!layer.empty() && mLayers->count(layer) == 0) {
            mRecords.Report(mRecords.GetRecordOffset(), kLayerName.key, "the element names a layer that is not there",
                            tFinding::eKind::kOddity);
        }
    }
    if (mRecords.ExpectOne(kNumComponents, {kType.key, kHeaderKey, LayoutFormat::kNumGroupEntries.key})) {
        CheckComponents(mRecords.DataAsInt(), mRecords.GetRecordOffset());
    }
}

void CElementChecker::CheckComponents(int count, size_t countOffset)
{
    int number = 0;
    while (!mRecords.IsLost() && (number < count || mRecords.PeekKey() == kType.key)) {
        const bool isAtEnd = mEndKey == 0 ? mRecords.GetBytesLeft() == 0 : mRecords.PeekKey() == mEndKey;
        if (IsAtElement() || isAtEnd) {
            break;
        }
        mRecords.SetComponent(++number);
        CheckComponent();
    }
    mRecords.SetComponent(0);
    mRecords.CheckCount(countOffset, kNumComponents.key, count, number, "components");
}

void CElementChecker::CheckComponent()
{
    if (!mRecords.ExpectOne(kType, {kCommon[0].key})) {
        return;
    }
    const int type = mRecords.DataAsInt();
    if (UComponentKinds::Find(type) == nullptr) {
        mRecords.Report(mRecords.GetRecordOffset(), kType.key, "component type " + Count(type) + " is not known");
    }
    if (type == kFlexTrackType && mRecords.ExpectOne(kType, {kCommon[0].key}) && mRecords.DataAsInt() != kPolyType) {
        mRecords.Report(mRecords.GetRecordOffset(), kType.key,
                        "a flexible track's second type must be that of a polygon", tFinding::eKind::kOddity);
    }
    mRecords.Expect(kCommon, {kStraight[0].key, kCurve[0].key, kOval[0].key, kNumPoints.key, kTextItem[0].key});
    CheckOwnRecords(type);
}

void CElementChecker::CheckOwnRecords(int type)
{
    if (IsPolygonType(type)) {
        CheckPoints();
    }
    if (UComponentKinds::Find(type) != nullptr) {
        static const std::vector<tRecord> kBehindPoints = CRecordChecker::Join({kPolygon, kFlexTrack});
        const std::span<const tRecord> own[] = {kStraight, kCurve, kPolygon, kTextItem, kOval, kBehindPoints};
        static_assert(std::size(own) == UComponentKinds::kCount); // in the order of the type codes
        mRecords.Expect(own[type - 1], {kType.key, kHeaderKey, LayoutFormat::kNumGroupEntries.key});
    }
}

void CElementChecker::CheckPoints()
{
    if (!mRecords.ExpectOne(kNumPoints, {kPoint[0].key, kPolygon[0].key})) {
        return;
    }
    const int count = mRecords.DataAsInt();
    const size_t countOffset = mRecords.GetRecordOffset();
    int number = 0;
    while (!mRecords.IsLost() && mRecords.PeekKey() != kPolygon[0].key &&
           (number < count || mRecords.PeekKey() == kPoint[0].key)) {
        ++number;
        mRecords.Expect(kPoint, {kPolygon[0].key});
    }
    mRecords.CheckCount(countOffset, kNumPoints.key, count, number, "points");
}

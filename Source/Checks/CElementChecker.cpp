#include "Checks/CElementChecker.h"

#include "BuildingBlocks/BasicGeometries/UComponentKinds.h"

#include <iterator>
#include <span>

namespace {
using enum eRecordType;

constexpr int kLayerNameKey = 217;
constexpr int kComponentCountKey = 206;
constexpr int kTypeKey = 300;
/// What the next element's header looks like as a key, and the first record behind the elements of a layout.
constexpr int kElementKey = CElementChecker::kElementMagic >> 16;
constexpr int kGroupsKey = 424;
constexpr int kFirstVersion = 3;
constexpr int kCurrentVersion = 4;
constexpr size_t kHeaderSize = 8;

constexpr tRecordRule kAttributes[] = {{207, kText, 32, "product number"},
                                       {208, kText, 64, "description"},
                                       {209, kText, 32, "manufacturer"},
                                       {210, kText, 128, "library name"},
                                       {211, kText, 8, "prefix"},
                                       {212, kInt, 0, "library number"},
                                       {213, kInt, 0, "price"},
                                       {214, kInt, 0, "currency"},
                                       {215, kInt, 0, "model scale"},
                                       {216, kBool, 0, "library flag"},
                                       {200, kDouble, 0, "x position"},
                                       {201, kDouble, 0, "y position"}};
constexpr tRecordRule kHeights[] = {{218, kDouble, 0, "height"},        {219, kDouble, 0, "grade start x"},
                                    {220, kDouble, 0, "grade start y"}, {221, kDouble, 0, "grade start z"},
                                    {222, kDouble, 0, "grade end x"},   {223, kDouble, 0, "grade end y"},
                                    {224, kDouble, 0, "grade end z"},   {225, kDouble, 0, "grade height"}};
constexpr tRecordRule kPlacement[] = {{202, kDouble, 0, "angle"},
                                      {203, kRaw, 6, "fill colour"},
                                      {204, kRaw, 6, "second colour"},
                                      {205, kBool, 0, "fill mode"}};
constexpr tRecordRule kLayerName = {kLayerNameKey, kText, 64, "layer name"};
constexpr tRecordRule kComponentCount = {kComponentCountKey, kInt, 0, "number of components"};
constexpr tRecordRule kType = {kTypeKey, kInt, 0, "component type"};

constexpr tRecordRule kCommon[] = {{301, kDouble, 0, "x offset"},       {302, kDouble, 0, "y offset"},
                                   {303, kDouble, 0, "gauge"},          {304, kDouble, 0, "component angle"},
                                   {305, kBool, 0, "joint 0 allowed"},  {306, kBool, 0, "joint 1 allowed"},
                                   {307, kDouble, 0, "trackbed width"}, {308, kDouble, 0, "rail width"},
                                   {309, kInt, 0, "middle rail"},       {310, kRaw, 6, "fixed colour"}};
constexpr tRecordRule kStraight[] = {{311, kDouble, 0, "length"}};
constexpr tRecordRule kCurve[] = {{312, kDouble, 0, "radius"}, {313, kDouble, 0, "arc angle"}};
constexpr tRecordRule kOval[] = {
    {315, kDouble, 0, "x radius"}, {316, kDouble, 0, "y radius"}, {317, kInt, 0, "line thickness"}};
constexpr tRecordRule kPointCount = {318, kInt, 0, "number of points"};
constexpr tRecordRule kPoint[] = {{319, kDouble, 0, "point x"}, {320, kDouble, 0, "point y"}};
constexpr int kPointKey = 319;
constexpr int kCloseKey = 321;
/// Behind the points of a flexible track; a polygon has all of them but the last.
constexpr tRecordRule kFlexEnd[] = {{kCloseKey, kBool, 0, "closed"},
                                    {322, kInt, 0, "polygon sub type"},
                                    {323, kInt, 0, "line thickness"},
                                    {314, kDouble, 0, "maximum length"}};
constexpr tRecordRule kTextRecords[] = {{324, kInt, 0, "text size"},
                                        {325, kInt, 0, "text style"},
                                        {326, kRaw, 256, "font name"},
                                        {327, kText, 2048, "text"}};

/// The records of a kind of its own, in the order of the type codes.
constexpr std::span<const tRecordRule> kOwnRecords[] = {
    kStraight, kCurve, std::span(kFlexEnd).first<std::size(kFlexEnd) - 1>(), kTextRecords, kOval, kFlexEnd};
static_assert(std::size(kOwnRecords) == UComponentKinds::kCount);

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
            if (mRecords.GetBytesLeft() < kHeaderSize) {
                mRecords.ReportEnd(0, "element " + Count(number + 1) + " of " + Count(count));
                break;
            }
            mRecords.Report(mRecords.GetPosition(), 0, "the header of element " + Count(number + 1) + " was expected");
            // One damaged byte in a header leaves the records behind it whole.
            if (mRecords.PeekWord(kHeaderSize) >> 16 != static_cast<uint32_t>(kAttributes[0].key)) {
                mRecords.SeekWord(kElementMagic);
                continue;
            }
        } else if (mRecords.GetBytesLeft() < kHeaderSize) {
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
    uint32_t version = mRecords.PeekWord(4);
    const size_t versionOffset = mRecords.GetPosition() + 4;
    if (version != kFirstVersion && version != kCurrentVersion) {
        mRecords.Report(versionOffset, 0, "element version " + Count(version) + " is not known");
    }
    mRecords.Skip(kHeaderSize);
    mRecords.Expect(kAttributes, {202, kLayerNameKey, kComponentCountKey});
    if (version == kFirstVersion && mRecords.PeekKey() == kHeights[0].key) {
        mRecords.Report(versionOffset, 0, "the header names version 3, the records are those of version 4");
        version = kCurrentVersion;
    }
    if (version != kFirstVersion) {
        mRecords.Expect(kHeights, {202, kLayerNameKey, kComponentCountKey});
    }
    mRecords.Expect(kPlacement, {kLayerNameKey, kComponentCountKey});
    if (version != kFirstVersion && mRecords.ExpectOne(kLayerName, {kComponentCountKey}) && mLayers != nullptr) {
        const std::string layer = mRecords.DataAsText();
        if (!layer.empty() && mLayers->count(layer) == 0) {
            mRecords.Report(mRecords.GetRecordOffset(), kLayerNameKey, "the element names a layer that is not there",
                            tFinding::eKind::kOddity);
        }
    }
    if (mRecords.ExpectOne(kComponentCount, {kTypeKey, kElementKey, kGroupsKey})) {
        CheckComponents(mRecords.DataAsInt(), mRecords.GetRecordOffset());
    }
}

void CElementChecker::CheckComponents(int count, size_t countOffset)
{
    int number = 0;
    while (!mRecords.IsLost() && (number < count || mRecords.PeekKey() == kTypeKey)) {
        const bool isAtEnd = mEndKey == 0 ? mRecords.GetBytesLeft() == 0 : mRecords.PeekKey() == mEndKey;
        if (IsAtElement() || isAtEnd) {
            break;
        }
        mRecords.SetComponent(++number);
        CheckComponent();
    }
    mRecords.SetComponent(0);
    mRecords.CheckCount(countOffset, kComponentCountKey, count, number, "components");
}

void CElementChecker::CheckComponent()
{
    if (!mRecords.ExpectOne(kType, {301})) {
        return;
    }
    const int type = mRecords.DataAsInt();
    if (UComponentKinds::Find(type) == nullptr) {
        mRecords.Report(mRecords.GetRecordOffset(), kTypeKey, "component type " + Count(type) + " is not known");
    }
    if (type == kFlexTrackType && mRecords.ExpectOne(kType, {301}) && mRecords.DataAsInt() != kPolyType) {
        mRecords.Report(mRecords.GetRecordOffset(), kTypeKey,
                        "a flexible track's second type must be that of a polygon", tFinding::eKind::kOddity);
    }
    mRecords.Expect(kCommon, {311, 312, 315, 318, 324});
    CheckOwnRecords(type);
}

void CElementChecker::CheckOwnRecords(int type)
{
    if (IsPolygonType(type)) {
        CheckPoints();
    }
    if (UComponentKinds::Find(type) != nullptr) {
        mRecords.Expect(kOwnRecords[type - 1], {kTypeKey, kElementKey, kGroupsKey});
    }
}

void CElementChecker::CheckPoints()
{
    if (!mRecords.ExpectOne(kPointCount, {kPointKey, kCloseKey})) {
        return;
    }
    const int count = mRecords.DataAsInt();
    const size_t countOffset = mRecords.GetRecordOffset();
    int number = 0;
    while (!mRecords.IsLost() && mRecords.PeekKey() != kCloseKey &&
           (number < count || mRecords.PeekKey() == kPointKey)) {
        ++number;
        mRecords.Expect(kPoint, {kCloseKey});
    }
    mRecords.CheckCount(countOffset, kPointCount.key, count, number, "points");
}

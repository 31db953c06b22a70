#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"

#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UBezier.h"
#include "Utilities/Geometry/UPointVec.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

CPolyBIG::CPolyBIG(CPolyBIG* source)
    : CBasicGeometry(source), mPoints(source->mPoints), mRotatedPoints(source->mRotatedPoints),
      mEditedPoint(source->mEditedPoint), mCloseFlag(source->mCloseFlag), mSecondFlag(source->mSecondFlag),
      mLineThickness(source->GetLineThickness()), mLegacySubType(source->mLegacySubType),
      mSecondWorkPoint(source->mSecondWorkPoint)
{}

CPolyBIG::CPolyBIG(void* raw) : CBasicGeometry(raw)
{
    int count = 0;
    const void* cursor = KVURawMem::FetchDataFromRawMem(BehindCommonRecord(raw), count);
    for (int i = 0; i < count; ++i) {
        CPoint point;
        cursor = UReach::Fetch(cursor, point.x);
        cursor = UReach::Fetch(cursor, point.y);
        mPoints.push_back(point);
    }
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mCloseFlag);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mSecondFlag);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mLegacySubType);
    KVURawMem::FetchDataFromRawMem(cursor, mLineThickness);
}

bool CPolyBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kCommonRawSize) && walk.SkipCounted<int>(kRawSizePerPoint) && walk.Skip(2 + 2 * sizeof(int));
}

void CPolyBIG::SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                   int lineThickness, tPolyLegacySubType legacySubType)
{
    mItemXOffset = UReach::Clamp(x);
    mItemYOffset = UReach::Clamp(y);
    mAngle = UReach::Clamp(angle);
    mGauge = 0.0;
    mLegacySubType = legacySubType;
    mPoints = points;
    UPointVec::ClampToReach(mPoints);
    mEditedPoint = -1;
    mLineThickness = lineThickness;
    AllowJoints(false, false);
}

void CPolyBIG::TransferFields(CFieldStream& fields)
{
    CBasicGeometry::TransferFields(fields);
    fields.Pass(mPoints, mEditedPoint, mSecondWorkPoint, mCloseFlag, mSecondFlag, mLineThickness, mLegacySubType);
}

void* CPolyBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, static_cast<int>(kPolyType));
    destination = CBasicGeometry::GetParameterAsRaw(destination);
    destination = KVURawMem::AppendDataToRawMem(destination, static_cast<int>(mPoints.size()));
    for (const CPoint& point : mPoints) {
        destination = KVURawMem::AppendDataToRawMem(destination, point.x);
        destination = KVURawMem::AppendDataToRawMem(destination, point.y);
    }
    destination = KVURawMem::AppendDataToRawMem(destination, mCloseFlag);
    destination = KVURawMem::AppendDataToRawMem(destination, mSecondFlag);
    destination = KVURawMem::AppendDataToRawMem(destination, mLegacySubType);
    return KVURawMem::AppendDataToRawMem(destination, mLineThickness);
}

int CPolyBIG::GetParameterRawSize()
{
    return kCommonRawSize + 8 + kRawSizePerPoint * static_cast<int>(mPoints.size()) + 10;
}

std::string CPolyBIG::ToString(int)
{
    return "Polygon (" + std::to_string(GetNumberOfPoints()) + ")";
}

CPoint CPolyBIG::GetPoint(int index) const
{
    return IsIndex(index) ? mPoints[static_cast<size_t>(index)] : CPoint::ZeroPos;
}

CPoint CPolyBIG::GetMiddle() const
{
    DRect box = {};
    CCalcBoundingBox grow(box);
    for (const CPoint& point : mPoints) {
        grow.Update(point);
    }
    return UDRect::Center(box);
}

void CPolyBIG::CalculateRotatedPointPositions(std::vector<CPoint>& points, double angle)
{
    points = mPoints;
    if (angle != 0.0) {
        UPointVec::RotatePointVecZ(points, GetMiddle(), angle);
    }
}

tTurn CPolyBIG::Placing(double angle) const
{
    const CPoint middle = GetMiddle();
    return {UArcGeometry::Direction(mAngle + angle), {middle.x, middle.y}, {mItemXOffset, mItemYOffset}};
}

void CPolyBIG::AppendPlacedPoints(double angle, std::vector<CPoint>& points) const
{
    if (!std::isfinite(angle)) {
        return;
    }
    const tTurn placing = Placing(angle);
    points.reserve(points.size() + mPoints.size());
    for (const CPoint& point : mPoints) {
        const tVector2D placed = placing.Apply({point.x, point.y});
        points.emplace_back(placed.x, placed.y, 0.0);
    }
}

CPoint& CPolyBIG::GetRotationReferencePoint(double)
{
    const CPoint middle = GetMiddle();
    mSecondWorkPoint = CPoint(mItemXOffset + middle.x, mItemYOffset + middle.y, 0.0);
    return mSecondWorkPoint;
}

void CPolyBIG::CalcBoundingBox(DRect& box, double angle)
{
    if (mPoints.empty()) {
        box = {mItemYOffset, mItemXOffset, mItemYOffset, mItemXOffset};
        return;
    }
    const tTurn placing = Placing(angle);
    const double halfWidth = CalcTrackMarkerWidth();
    CCalcBoundingBox grow(box);
    tVector2D previous = placing.Apply({mPoints.front().x, mPoints.front().y});
    grow.Update(previous.x, previous.y);
    const size_t edges = mCloseFlag ? mPoints.size() : mPoints.size() - 1;
    for (size_t i = 1; i <= edges; ++i) {
        const CPoint& corner = mPoints[i % mPoints.size()];
        const tVector2D point = placing.Apply({corner.x, corner.y});
        grow.Update(point.x, point.y);
        if (halfWidth != 0.0) {
            const double dx = point.x - previous.x;
            const double dy = point.y - previous.y;
            const double length = std::hypot(dx, dy);
            if (length > 0.0) {
                const double acrossX = std::fabs(halfWidth * dy / length);
                const double acrossY = std::fabs(halfWidth * dx / length);
                for (const tVector2D end : {previous, point}) {
                    grow.Update(end.x - acrossX, end.y - acrossY);
                    grow.Update(end.x + acrossX, end.y + acrossY);
                }
            }
        }
        previous = point;
    }
}

void CPolyBIG::DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points)
{
    std::vector<CPoint> placed;
    AppendPlacedPoints(angle, placed);
    const auto isHere = [&placed](const CPoint& point) { return point.x == placed[0].x && point.y == placed[0].y; };
    if (placed.empty() || std::all_of(placed.begin(), placed.end(), isHere) || !std::isfinite(distance)) {
        points.insert(points.end(), placed.begin(), placed.begin() + (placed.empty() ? 0 : 1));
        return;
    }
    tCourse course;
    if (!IsClosed()) {
        UTrackCourse::AppendChain(placed, course);
        UTrackCourse::CalcOffset(course, -distance, points);
        std::vector<CPoint> left;
        UTrackCourse::CalcOffset(course, distance, left);
        points.insert(points.end(), left.rbegin(), left.rend());
        return;
    }
    // The way around begins in the middle of the longest edge, where no bend cuts the ends of the line.
    double area = 0.0;
    double longest = -1.0;
    size_t start = 0;
    for (size_t i = 0; i < placed.size(); ++i) {
        const CPoint& from = placed[i];
        const CPoint& to = placed[(i + 1) % placed.size()];
        area += (from.x - placed[0].x) * (to.y - placed[0].y) - (to.x - placed[0].x) * (from.y - placed[0].y);
        if (from.CalcDistance2D(to) > longest) {
            longest = from.CalcDistance2D(to);
            start = i;
        }
    }
    std::rotate(placed.begin(), placed.begin() + static_cast<std::ptrdiff_t>(start + 1), placed.end());
    const CPoint middle = (placed.back() + placed.front()) * 0.5;
    placed.insert(placed.begin(), middle);
    placed.push_back(middle);
    UTrackCourse::AppendChain(placed, course);
    UTrackCourse::CalcOffset(course, area >= 0.0 ? -distance : distance, points);
    points.pop_back(); // the middle again
}

void CPolyBIG::DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points)
{
    DefineTrackItemOutline(angle, CalcTrackMarkerWidth() + distance, points);
}

bool CPolyBIG::Load(FILE* file, int version)
{
    if (!CBasicGeometry::Load(file, version)) {
        WarnUnsupported("virtual bool CPolyBIG::Load(FILE *, int)", version);
        return false;
    }
    CTaggedFile records(file);
    int count = 0;
    records.Read(ComponentFormat::kNumPoints.key, count);
    for (int i = 0; i < count; ++i) {
        CPoint point;
        records.ReadTable<ComponentFormat::kPoint>(std::tie(point.x, point.y));
        if (records.AtEnd()) {
            break;
        }
        mPoints.push_back(point);
    }
    records.ReadTable<ComponentFormat::kPolygon>(std::tie(mCloseFlag, mLegacySubType, mLineThickness));
    return true;
}

void CPolyBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, static_cast<int>(kPolyType));
    CBasicGeometry::Save(file);
    records.Write(ComponentFormat::kNumPoints.key, GetNumberOfPoints());
    for (const CPoint& point : mPoints) {
        records.WriteTable<ComponentFormat::kPoint>(std::tie(point.x, point.y));
    }
    records.WriteTable<ComponentFormat::kPolygon>(std::tie(mCloseFlag, mLegacySubType, mLineThickness));
}

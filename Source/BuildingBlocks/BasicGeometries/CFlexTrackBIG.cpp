#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"

#include "BuildingBlocks/BasicGeometries/ComponentKeys.h"
#include "CTaggedFile/CTaggedFile.h"
#include "KVURawMem/KVURawMem.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UBezier.h"

#include <cmath>

CFlexTrackBIG::CFlexTrackBIG()
{
    mCloseFlag = true;
    mLineThickness = 1;
}

CFlexTrackBIG::CFlexTrackBIG(CFlexTrackBIG* source)
    : CPolyBIG(source), mMaxLength(source->mMaxLength), mStartAngle(source->mStartAngle), mEndAngle(source->mEndAngle)
{}

CFlexTrackBIG::CFlexTrackBIG(void* raw) : CPolyBIG(static_cast<void*>(static_cast<char*>(raw) + kTypeCodeSize))
{
    const char* behindPolygon = static_cast<const char*>(raw) + CPolyBIG::GetParameterRawSize();
    KVURawMem::FetchDataFromRawMem(static_cast<const void*>(behindPolygon), mMaxLength);
    CFlexTrackBIG::CalcBezierCurve();
}

void CFlexTrackBIG::SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                        int lineThickness, tPolyLegacySubType legacySubType)
{
    CPolyBIG::SpecifyPolyGeometry(x, y, points, angle, lineThickness, legacySubType);
    CalcBezierCurve();
}

void CFlexTrackBIG::SpecifyFlexGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                        double trackbedWidth, double maxLength)
{
    mTrackbedWidth = trackbedWidth;
    mMaxLength = maxLength;
    SpecifyPolyGeometry(x, y, points, angle, mLineThickness, mLegacySubType);
    AllowJoints(true, true);
}

void CFlexTrackBIG::SetPoints(const std::vector<CPoint>& points)
{
    CPolyBIG::SetPoints(points);
    CalcBezierCurve();
}

void CFlexTrackBIG::AddPoint(const CPoint& point)
{
    CPolyBIG::AddPoint(point);
    CalcBezierCurve();
}

void CFlexTrackBIG::SetAngle(double angle)
{
    CPolyBIG::SetAngle(angle);
    CalcBezierCurve();
}

void CFlexTrackBIG::CalcBezierCurve()
{
    CalculateRotatedPointPositions(mRotatedPoints, mAngle);
    UBezier::CalcEndAngles(mPoints, mStartAngle, mEndAngle);
    mTrackLength = kLengthUnknown;
}

double CFlexTrackBIG::GetTrackLength()
{
    if (mTrackLength < 0.0) {
        mTrackLength = UBezier::Length(mPoints);
    }
    return mTrackLength;
}

void* CFlexTrackBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, GetType());
    destination = CPolyBIG::GetParameterAsRaw(destination);
    return KVURawMem::AppendDataToRawMem(destination, mMaxLength);
}

std::string CFlexTrackBIG::ToString(int unit)
{
    return std::string("Flex ") + UUnits::BuildMeasureUnitString(unit, mMaxLength);
}

void CFlexTrackBIG::DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode)
{
    const double turned = mAngle + angle;
    const tDirection turn = UArcGeometry::Direction(turned);
    const CPoint middle = GetMiddle();
    const CPoint ends[] = {mPoints.empty() ? middle : mPoints.front(), mPoints.empty() ? middle : mPoints.back()};
    for (int i = 0; i < 2; ++i) {
        const double dx = ends[i].x - middle.x;
        const double dy = ends[i].y - middle.y;
        CPoint& local = mJoints[i].GetLocalPoint();
        local.x = mItemXOffset + middle.x + dx * turn.cosine - dy * turn.sine;
        local.y = mItemYOffset + middle.y + dy * turn.cosine + dx * turn.sine;
    }
    mJoints[0].SetReducedAngle(mStartAngle + turned);
    mJoints[1].SetReducedAngle(mEndAngle + 180.0 + turned);
    FinishJoints(origin, grade, mode);
    mJoints[0].SetComponentFlag(true);
    mJoints[1].SetComponentFlag(true);
}

void CFlexTrackBIG::CalcBoundingBox(DRect& box, double angle)
{
    if (mPoints.empty()) {
        CPolyBIG::CalcBoundingBox(box, angle);
        return;
    }
    UBezier::CalcBox(mPoints, Placing(angle), CalcTrackMarkerWidth(), box);
}

tTurn CFlexTrackBIG::Placing(double angle) const
{
    const CPoint middle = GetMiddle();
    return {UArcGeometry::Direction(mAngle + angle), {middle.x, middle.y}, {mItemXOffset, mItemYOffset}};
}

void CFlexTrackBIG::DefineCourse(double angle, double reach, tCourse& course) const
{
    UBezier::Flatten(mPoints, Placing(angle), reach, course);
}

void CFlexTrackBIG::DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points)
{
    tCourse course;
    DefineCourse(angle, distance, course);
    UTrackCourse::CalcOffset(course, -distance, points);
    std::vector<CPoint> left;
    UTrackCourse::CalcOffset(course, distance, left);
    points.insert(points.end(), left.rbegin(), left.rend());
}

void CFlexTrackBIG::DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points)
{
    DefineTrackItemOutline(angle, CalcTrackMarkerWidth() + distance, points);
}

bool CFlexTrackBIG::Load(FILE* file, int version)
{
    CTaggedFile records(file);
    int polygonCode = 0;
    records.Read(kKeyType, polygonCode); // the element has read the flexible track's own
    if (!CPolyBIG::Load(file, version)) {
        return false;
    }
    records.Read(kKeyMaxLength, mMaxLength);
    CalcBezierCurve();
    return true;
}

void CFlexTrackBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(kKeyType, GetType());
    CPolyBIG::Save(file);
    records.Write(kKeyMaxLength, mMaxLength);
}

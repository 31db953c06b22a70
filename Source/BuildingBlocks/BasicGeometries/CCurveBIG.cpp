#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"

#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ComponentFormat.h"
#include "KVUNum/Angles.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UReach.h"
#include "Utilities/Geometry/UTrackCourse.h"

#include <algorithm>
#include <cmath>

namespace {
CPoint PointOnArc(const CPoint& centre, double radius, double heading)
{
    const tDirection direction = UArcGeometry::Direction(heading);
    return {centre.x + radius * direction.sine, centre.y - radius * direction.cosine, 0.0};
}
} // namespace

CCurveBIG::CCurveBIG()
{
    UpdateCurvedRailLength();
}

CCurveBIG::CCurveBIG(CCurveBIG* source) : CBasicGeometry(source), mRadius(source->mRadius), mArcAngle(source->mArcAngle)
{
    UpdateCurvedRailLength();
}

CCurveBIG::CCurveBIG(void* raw) : CBasicGeometry(raw)
{
    UReach::Fetch(UReach::Fetch(BehindCommonRecord(raw), mRadius), mArcAngle);
    UpdateCurvedRailLength();
}

bool CCurveBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kCommonRawSize + 2 * sizeof(double));
}

void CCurveBIG::SpecifyCurveGeometry(double xOffset, double yOffset, double radius, double arcAngle, double angle,
                                     double gauge, double trackbedWidth, bool joint0Allowed, bool joint1Allowed)
{
    mItemXOffset = UReach::Clamp(xOffset);
    mItemYOffset = UReach::Clamp(yOffset);
    mRadius = UReach::Clamp(radius);
    mArcAngle = UReach::Clamp(arcAngle);
    mAngle = UReach::Clamp(angle);
    mGauge = UReach::Clamp(gauge);
    mTrackbedWidth = UReach::Clamp(trackbedWidth);
    AllowJoints(joint0Allowed, joint1Allowed);
    UpdateCurvedRailLength();
}

void CCurveBIG::UpdateCurvedRailLength()
{
    mTrackLength = mRadius * mArcAngle * kPi / 180.0;
}

void CCurveBIG::TransferFields(CFieldStream& fields)
{
    CBasicGeometry::TransferFields(fields);
    fields.Pass(mRadius, mArcAngle);
}

void* CCurveBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, GetType());
    destination = CBasicGeometry::GetParameterAsRaw(destination);
    destination = KVURawMem::AppendDataToRawMem(destination, mRadius);
    return KVURawMem::AppendDataToRawMem(destination, mArcAngle);
}

std::string CCurveBIG::ToString(int unit)
{
    char arc[352]; // the longest double with one decimal
    snprintf(arc, sizeof arc, "Curve %4.1f, R:", mArcAngle);
    return std::string(arc) + UUnits::BuildMeasureUnitString(unit, mRadius);
}

tTravelledArc CCurveBIG::JointArc(double angle) const
{
    // An arc that turns the other way lies on the other side of its start: its centre is a negative radius away.
    const double radius = mRadius + mGauge;
    return {mArcAngle < 0.0 ? -radius : radius, mAngle + angle, mArcAngle};
}

CPoint CCurveBIG::GetOffsetForLeftTopAlignedCurve(double angle)
{
    const tTravelledArc arc = JointArc(angle);
    const DRect band = UArcGeometry::BandBox(arc, CalcTrackMarkerWidth());
    const CPoint centre(mItemXOffset - band.left, mItemYOffset - band.top, 0.0);
    mFirstEnd = PointOnArc(centre, arc.radius, arc.start);
    mSecondEnd = PointOnArc(centre, arc.radius, arc.start + arc.sweep);
    return centre;
}

void CCurveBIG::CurveInternalDefJoints()
{
    mJoints[0].GetLocalPoint() = mFirstEnd;
    mJoints[1].GetLocalPoint() = mSecondEnd;
}

void CCurveBIG::DefineJoints(const CPoint& origin, double angle, const CGradeVector& grade, int mode)
{
    GetOffsetForLeftTopAlignedCurve(angle);
    CurveInternalDefJoints();
    const double direction = mAngle + angle;
    mJoints[0].SetReducedAngle(direction);
    mJoints[1].SetReducedAngle(direction + mArcAngle + 180.0);
    FinishJoints(origin, grade, mode);
    mJoints[0].SetComponentFlag(false);
    mJoints[1].SetComponentFlag(true);
}

void CCurveBIG::CalcBoundingBox(DRect& box, double angle)
{
    const DRect band = UArcGeometry::BandBox(JointArc(angle), CalcTrackMarkerWidth());
    box = {mItemYOffset, mItemXOffset, mItemYOffset + (band.bottom - band.top),
           mItemXOffset + (band.right - band.left)};
}

void CCurveBIG::DefineTrackItemOutline(double angle, double distance, std::vector<CPoint>& points)
{
    if (!std::isfinite(angle) || !std::isfinite(distance)) {
        return;
    }
    const CPoint centre = GetOffsetForLeftTopAlignedCurve(angle);
    const tTravelledArc arc = JointArc(angle);
    const double outer = std::fabs(arc.radius) + std::fabs(distance);
    const double needed = std::fabs(arc.sweep) * kPi / 180.0 / UTrackCourse::WidestStep(outer);
    const double most = UTrackCourse::kMostArcSteps;
    const int steps = static_cast<int>(std::clamp(std::ceil(needed), 1.0, most));
    points.reserve(points.size() + 2 * static_cast<size_t>(steps) + 2);
    for (int i = 0; i <= steps; ++i) {
        points.push_back(PointOnArc(centre, arc.radius + distance, arc.start + arc.sweep * i / steps));
    }
    for (int i = steps; i >= 0; --i) {
        points.push_back(PointOnArc(centre, arc.radius - distance, arc.start + arc.sweep * i / steps));
    }
}

void CCurveBIG::Scale(double factor, bool scaleOffset)
{
    if (!IsScale(factor)) {
        return;
    }
    CBasicGeometry::Scale(factor, scaleOffset);
    mRadius = UReach::Clamp(mRadius * factor);
    UpdateCurvedRailLength();
}

void CCurveBIG::DefineTrackItemArea(double angle, double distance, std::vector<CPoint>& points)
{
    DefineTrackItemOutline(angle, CalcTrackMarkerWidth() + distance, points);
}

bool CCurveBIG::Load(FILE* file, int version)
{
    if (!CBasicGeometry::Load(file, version)) {
        return false;
    }
    CTaggedFile(file).ReadTable<ComponentFormat::kCurve>(std::tie(mRadius, mArcAngle));
    UpdateCurvedRailLength();
    return true;
}

void CCurveBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, GetType());
    CBasicGeometry::Save(file);
    records.WriteTable<ComponentFormat::kCurve>(std::tie(mRadius, mArcAngle));
}

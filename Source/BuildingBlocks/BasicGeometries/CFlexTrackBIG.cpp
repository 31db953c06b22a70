#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"
#include "UnitLength/UUnits.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UBezier.h"
#include "Utilities/Geometry/UPointVec.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {
/// By how much of itself a length may exceed its limit: what measuring and rounding may add.
constexpr double kLengthSlack = 1e-6;
/// Bisections when a track is drawn back: to a millionth of any length.
constexpr int kDrawBackSteps = 40;
} // namespace

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
    UReach::Fetch(static_cast<const void*>(behindPolygon), mMaxLength);
    CFlexTrackBIG::CalcBezierCurve();
}

bool CFlexTrackBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kTypeCodeSize) && CPolyBIG::SkipRaw(walk) && walk.Skip(sizeof(double));
}

void CFlexTrackBIG::SpecifyPolyGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                        int lineThickness, tPolyLegacySubType legacySubType)
{
    mJoints[0].DisconnectJoint();
    mJoints[1].DisconnectJoint();
    CPolyBIG::SpecifyPolyGeometry(x, y, points, angle, lineThickness, legacySubType);
    CalcBezierCurve();
}

void CFlexTrackBIG::SpecifyFlexGeometry(double x, double y, const std::vector<CPoint>& points, double angle,
                                        double trackbedWidth, double maxLength)
{
    mTrackbedWidth = UReach::Clamp(trackbedWidth);
    mMaxLength = UReach::Clamp(maxLength);
    SpecifyPolyGeometry(x, y, points, angle, mLineThickness, mLegacySubType);
    AllowJoints(true, true);
}

double CFlexTrackBIG::GetLengthLimit() const
{
    if (!(mMaxLength > 0.0)) {
        return std::numeric_limits<double>::infinity();
    }
    return std::max(mMaxLength, UBezier::Length(mPoints)) * (1.0 + kLengthSlack);
}

bool CFlexTrackBIG::MayBecome(const std::vector<CPoint>& points) const
{
    return UBezier::Length(points) <= GetLengthLimit();
}

bool CFlexTrackBIG::Fit(std::vector<CPoint>& points, double spare) const
{
    UPointVec::ClampToReach(points);
    const double limit = GetLengthLimit();
    if (UBezier::Length(points) <= std::max(limit, mMaxLength * (1.0 + spare))) {
        return true;
    }
    const bool holdsFirst = IsHeld(0, points.front());
    const bool holdsLast = IsHeld(1, points.back());
    if (holdsFirst && holdsLast) {
        if (points.size() != mPoints.size()) {
            return false;
        }
        GoTowards(points, limit);
        return true;
    }
    const auto isSame = [](const CPoint& a, const CPoint& b) { return a.x == b.x && a.y == b.y; };
    const bool pullsFirst =
        !mPoints.empty() && isSame(mPoints.back(), points.back()) && !isSame(mPoints.front(), points.front());
    const bool drawsFirst = holdsLast || (pullsFirst && !holdsFirst);
    if (drawsFirst) {
        std::reverse(points.begin(), points.end());
    }
    DrawBack(points, limit);
    if (drawsFirst) {
        std::reverse(points.begin(), points.end());
    }
    return true;
}

bool CFlexTrackBIG::IsHeld(int joint, const CPoint& wanted) const
{
    if (mJoints[joint].GetPartner() == nullptr || mPoints.empty()) {
        return false;
    }
    const CPoint& end = joint == 0 ? mPoints.front() : mPoints.back();
    return end.CalcDistance2D(wanted) <= CJoint::kSnapTolerance;
}

void CFlexTrackBIG::GoTowards(std::vector<CPoint>& wanted, double limit) const
{
    const auto at = [&](double share) {
        std::vector<CPoint> points = mPoints;
        for (size_t i = 0; i < points.size(); ++i) {
            points[i] = points[i] + (wanted[i] - points[i]) * share;
        }
        return points;
    };
    double fits = 0.0;
    double tooLong = 1.0;
    for (int i = 0; i < kDrawBackSteps; ++i) {
        const double middle = (fits + tooLong) / 2.0;
        (UBezier::Length(at(middle)) <= limit ? fits : tooLong) = middle;
    }
    wanted = at(fits);
}

void CFlexTrackBIG::Edited()
{
    const CCompositeGeometry* element = mJoints[0].GetOwner();
    if (element != nullptr) {
        DefineJoints(element->GetPosition(), element->GetAngle(), element->GetGrade(), kPlaceForConnection);
    } else {
        DefineJoints(CPoint::ZeroPos, 0.0, CGradeVector::ZeroGrade, kPlaceForConnection);
    }
    for (CJoint& joint : mJoints) {
        CJoint* const partner = joint.GetPartner();
        if (partner == nullptr) {
            continue;
        }
        if (partner->GetOwner() != nullptr && partner->GetOwner() != element) {
            partner->GetOwner()->DefineAllJoints(); // its element may have been moved since they were placed
        }
        if (!joint.LiesAt(*partner)) {
            joint.DisconnectJoint();
        }
    }
}

void CFlexTrackBIG::DrawBack(std::vector<CPoint>& points, double limit)
{
    const tTurn unturned = {{1.0, 0.0}, {0.0, 0.0}, {0.0, 0.0}};
    tCourse course;
    UBezier::Flatten(points, unturned, 0.0, course);
    const std::vector<double> lengths = UBezier::PointLengths(points);
    // The curve through the points kept and a new end is not quite the old one, so the place of that end is searched.
    const auto cut = [&](double length) {
        const auto behind = std::lower_bound(lengths.begin(), lengths.end(), length * (1.0 - kLengthSlack));
        std::vector<CPoint> kept(points.begin(), points.begin() + (behind - lengths.begin()));
        const tCoursePoint end = UTrackCourse::AtLength(course, length);
        kept.emplace_back(end.point.x, end.point.y, 0.0);
        return kept;
    };
    double fits = 0.0;
    double tooLong = course.back().length;
    for (int i = 0; i < kDrawBackSteps; ++i) {
        const double middle = (fits + tooLong) / 2.0;
        (UBezier::Length(cut(middle)) <= limit ? fits : tooLong) = middle;
    }
    points = cut(fits);
}

CPoint CFlexTrackBIG::Halfway(size_t from, size_t to) const
{
    // Points that repeat their predecessor have no piece of their own.
    size_t piece = 0;
    for (size_t i = 0; i < from; ++i) {
        piece += mPoints[i].x != mPoints[i + 1].x || mPoints[i].y != mPoints[i + 1].y ? 1 : 0;
    }
    CPoint halfway = CPolyBIG::Halfway(from, to);
    size_t index = 0;
    const bool isPiece = mPoints[from].x != mPoints[to].x || mPoints[from].y != mPoints[to].y;
    UBezier::ForEachSegment(mPoints, [&](const tBezierSegment& segment) {
        if (index++ == piece && isPiece) {
            const tVector2D middle = UBezier::PointAt(segment, 0.5);
            halfway.SetPos(middle.x, middle.y);
        }
    });
    return halfway;
}

int CFlexTrackBIG::PointIsCloseToHandle(const CPoint& point, Point32& handle) const
{
    const int first = mJoints[0].GetPartner() != nullptr ? 1 : 0;
    const int last = GetNumberOfPoints() - (mJoints[1].GetPartner() != nullptr ? 1 : 0);
    return FindHandle(point, first, last, handle);
}

void CFlexTrackBIG::Scale(double factor, bool scaleOffset)
{
    if (IsScale(factor)) {
        mMaxLength = UReach::Clamp(mMaxLength * factor);
        CPolyBIG::Scale(factor, scaleOffset);
    }
}

void CFlexTrackBIG::SetAngle(double angle)
{
    CPolyBIG::SetAngle(angle);
    CalcBezierCurve();
    Edited();
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

void CFlexTrackBIG::TransferFields(CFieldStream& fields)
{
    CPolyBIG::TransferFields(fields);
    fields.Pass(mMaxLength, mStartAngle, mEndAngle);
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
    const tTurn placing = Placing(angle);
    for (size_t i = 0; i < 2; ++i) {
        const CPoint& end = mPoints.empty() ? CPoint::ZeroPos : i == 0 ? mPoints.front() : mPoints.back();
        const tVector2D placed = placing.Apply({end.x, end.y});
        mJoints[i].GetLocalPoint().SetPos(placed.x, placed.y);
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
    records.Read(ComponentFormat::kType.key, polygonCode); // the element has read the flexible track's own
    const bool isLoaded = CPolyBIG::Load(file, version);
    if (isLoaded) {
        records.ReadTable<ComponentFormat::kFlexTrack>(std::tie(mMaxLength));
    } else {
        WarnUnsupported("virtual bool CFlexTrackBIG::Load(FILE *, int)", version);
    }
    CalcBezierCurve();
    return isLoaded;
}

void CFlexTrackBIG::Save(FILE* file)
{
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, GetType());
    CPolyBIG::Save(file);
    records.WriteTable<ComponentFormat::kFlexTrack>(std::tie(mMaxLength));
}

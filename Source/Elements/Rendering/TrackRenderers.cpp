#include "Elements/Rendering/TrackRenderers.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "Utilities/Geometry/UBezier.h"

#include <cmath>

namespace {
/// Where a joint lies in the layout, placed anew.
tVector2D JointAt(CBasicGeometry& component, int joint, const tPlacement& place)
{
    const CPoint& local = component.GetJoint(joint)->GetLocalPoint();
    return {local.x + place.position.x, local.y + place.position.y};
}

void PlaceJoints(CBasicGeometry& component, const tPlacement& place)
{
    component.DefineJoints(CPoint::ZeroPos, place.angle, CGradeVector::ZeroGrade, CBasicGeometry::kPlaceForTrackMarks);
}

bool IsFinite(tVector2D point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}
} // namespace

CTrackCourse CStraightRenderer::MakeCourse(CBasicGeometry& component, const tPlacement& place) const
{
    PlaceJoints(component, place);
    const tVector2D from = JointAt(component, 0, place);
    const tVector2D to = JointAt(component, 1, place);
    CTrackCourse course;
    if (IsFinite(from) && IsFinite(to) && (from.x != to.x || from.y != to.y)) {
        course.AddLine(from, to);
    }
    return course;
}

CTrackCourse CCurveRenderer::MakeCourse(CBasicGeometry& component, const tPlacement& place) const
{
    auto& curve = static_cast<CCurveBIG&>(component);
    PlaceJoints(component, place);
    const tVector2D start = JointAt(component, 0, place);
    const double sweep = curve.GetItemArcAngle();
    const double radius = curve.GetItemRadius() + curve.GetGauge(); // the joints' arc
    const double heading = curve.GetAngle() + place.angle;
    CTrackCourse course;
    if (IsFinite(start) && std::isfinite(sweep) && std::isfinite(heading) && sweep != 0.0 && radius != 0.0 &&
        std::fabs(radius) <= kMostRadius) {
        course.AddArc(start, {sweep < 0.0 ? -radius : radius, heading, sweep});
    }
    return course;
}

CTrackCourse CFlexTrackRenderer::MakeCourse(CBasicGeometry& component, const tPlacement& place) const
{
    auto& track = static_cast<CFlexTrackBIG&>(component);
    tTurn turn = track.Placing(place.angle);
    turn.shift = {turn.shift.x + place.position.x, turn.shift.y + place.position.y};
    CTrackCourse course;
    bool finite = true;
    UBezier::ForEachSegment(track.GetPoints(), [&](const tBezierSegment& s) {
        const tBezierSegment turned = {turn.Apply(s.p0), turn.Apply(s.p1), turn.Apply(s.p2), turn.Apply(s.p3)};
        finite = finite && IsFinite(turned.p0) && IsFinite(turned.p1) && IsFinite(turned.p2) && IsFinite(turned.p3);
        if (finite) {
            course.AddCurve(turned);
        }
    });
    return finite ? course : CTrackCourse();
}

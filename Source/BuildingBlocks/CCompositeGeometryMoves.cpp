// How an element as a whole is placed, turned and aligned.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <boost/foreach.hpp>

#include <cmath>

void CCompositeGeometry::DefineAllJoints()
{
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->DefineJoints(mLayout.position, mLayout.angle, mLayout.grade, CBasicGeometry::kPlaceForConnection);
    }
}

void CCompositeGeometry::CalcBoundingBox(DRect& box)
{
    CCalcBoundingBox grow(box);
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        DRect part = {};
        component->CalcBoundingBox(part, mLayout.angle);
        grow.Update(part);
    }
}

CPoint CCompositeGeometry::CalcLeftTop()
{
    DRect box = {};
    CCalcBoundingBox grow(box);
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        DRect part = {};
        if (component->GetType() != kTextType || mLayout.angle != 0.0) {
            component->CalcBoundingBox(part, mLayout.angle);
        }
        grow.Update(part);
    }
    return {box.left, box.top, 0.0};
}

void CCompositeGeometry::MoveComponentsBy(double dx, double dy)
{
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->MoveItemBy(dx, dy);
    }
}

CPoint CCompositeGeometry::AlignComponentsLeftTop(DRect* box)
{
    DRect bounds = {};
    CalcBoundingBox(bounds);
    if (box != nullptr) {
        *box = bounds;
    }
    MoveComponentsBy(-bounds.left, -bounds.top);
    return {-bounds.left, -bounds.top, 0.0};
}

void CCompositeGeometry::AlignComponentJointOnPoint(int component, int joint, const CPoint& point)
{
    DefineAllJoints();
    const CPoint& current = mComponents[static_cast<size_t>(component)]->GetJoint(joint)->GetPosition();
    MoveBy(point.x - current.x, point.y - current.y);
    SetZPosition(mLayout.position.z + point.z - current.z);
    DefineAllJoints();
}

void CCompositeGeometry::RotateBy(double angle)
{
    // The middle of the unturned box is a point of the element, so that turning back restores it; the middle of a
    // turned curve's box is another point at every angle.
    const double turned = mLayout.angle;
    const CPoint origin = mLayout.position;
    if (turned != 0.0) {
        RotateBy(origin, -turned);
    }
    DRect box = {};
    CCalcBoundingBox grow(box);
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        DRect part = {};
        component->CalcBoundingBox(part, 0.0);
        if (component->GetType() == kTextType) { // its box does not know of its offset
            const double x = component->GetItemXOffset();
            const double y = component->GetItemYOffset();
            part = {part.top + y, part.left + x, part.bottom + y, part.right + x};
        }
        grow.Update(part);
    }
    CPoint middle = UDRect::Center(box);
    middle.MoveBy(mLayout.position.x, mLayout.position.y, 0.0);
    RotateBy(middle, turned + angle);
    if (turned != 0.0) {
        const CPoint unturned = middle;
        middle.Rotate(origin, turned);
        MoveBy(middle.x - unturned.x, middle.y - unturned.y);
        DefineAllJoints();
    }
}

void CCompositeGeometry::RotateBy(const CPoint& centre, double angle)
{
    const CPoint pivot(centre.x - mLayout.position.x, centre.y - mLayout.position.y, 0.0);
    const double turned = std::fmod(mLayout.angle + angle, 360.0);
    // Each component turns about a point of its own, so each is moved to where the whole takes one of its points.
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->DefineJoints(CPoint::ZeroPos, mLayout.angle, CGradeVector::ZeroGrade,
                                CBasicGeometry::kPlaceForTrackMarks);
        CPoint target = component->GetRotationReferencePoint(mLayout.angle);
        target.Rotate(pivot, angle);
        component->DefineJoints(CPoint::ZeroPos, turned, CGradeVector::ZeroGrade, CBasicGeometry::kPlaceForTrackMarks);
        const CPoint& current = component->GetRotationReferencePoint(turned);
        component->MoveItemBy(target.x - current.x, target.y - current.y);
    }
    mLayout.angle = turned;
    const CPoint corner = CalcLeftTop();
    MoveComponentsBy(-corner.x, -corner.y);
    MoveBy(corner.x, corner.y);
    if (mLayout.grade.IsGraded()) {
        CPoint start = mLayout.grade.GetStartPoint();
        CPoint end = mLayout.grade.GetEndPoint();
        for (CPoint* point : {&start, &end}) {
            point->Rotate(pivot, angle);
            point->MoveBy(-corner.x, -corner.y, 0.0);
        }
        mLayout.grade = CGradeVector(start, end, mLayout.grade.GetDeltaHeight());
    }
    DefineAllJoints();
}

void CCompositeGeometry::SetAngle(double angle)
{
    RotateBy(angle - mLayout.angle);
    mLayout.angle = angle;
}

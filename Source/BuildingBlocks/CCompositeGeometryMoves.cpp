// How an element as a whole is placed, turned, aligned and scaled.
#include "Bounds.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"
#include "Utilities/Geometry/UReach.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

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

void CCompositeGeometry::CalcPlacedBox(DRect& box)
{
    CCalcBoundingBox grow(box);
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        DRect part = {};
        component->CalcPlacedBox(part, mLayout.angle);
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

CPoint CCompositeGeometry::MoveContentsBy(double dx, double dy)
{
    MoveComponentsBy(dx, dy);
    if (mLayout.grade.IsGraded()) {
        const CPoint moved(dx, dy, 0.0);
        mLayout.grade = CGradeVector(mLayout.grade.GetStartPoint() + moved, mLayout.grade.GetEndPoint() + moved,
                                     mLayout.grade.GetDeltaHeight());
    }
    DefineAllJoints();
    return {dx, dy, 0.0};
}

CPoint CCompositeGeometry::CenterAllComponents()
{
    DRect box = {};
    CalcPlacedBox(box);
    const CPoint middle = UDRect::Center(box);
    return MoveContentsBy(-middle.x, -middle.y);
}

CPoint CCompositeGeometry::AlignComponentsOnJoint(int component, int joint)
{
    if (!HasJoint(component, joint)) {
        return CPoint::ZeroPos;
    }
    DefineAllJoints();
    const CPoint& local = mComponents[static_cast<size_t>(component)]->GetJoint(joint)->GetLocalPoint();
    return MoveContentsBy(-local.x, -local.y);
}

bool CCompositeGeometry::HasJoint(int component, int joint) const
{
    return component >= 0 && static_cast<size_t>(component) < mComponents.size() && (joint == 0 || joint == 1);
}

void CCompositeGeometry::Scale(double factor)
{
    if (!CBasicGeometry::IsScale(factor)) {
        return;
    }
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        component->Scale(factor, true);
    }
    const CGradeVector& grade = mLayout.grade;
    mLayout.grade =
        CGradeVector(UReach::Clamp(grade.GetStartPoint() * factor), UReach::Clamp(grade.GetEndPoint() * factor),
                     UReach::Clamp(grade.GetDeltaHeight() * factor));
    DefineAllJoints();
}

int CCompositeGeometry::SimplifyJoinPolylines()
{
    if (mComponents.size() > Bounds::kMostComponents) {
        return 0;
    }
    struct tLine {
        CPolyBIG* poly;
        CPoint ends[2];
        RGBColor color;
    };
    const auto findEnds = [](tLine& line) {
        line.poly->GetScaledRotatedPoint(line.ends[0], 0, 1.0);
        line.poly->GetScaledRotatedPoint(line.ends[1], line.poly->GetNumberOfPoints() - 1, 1.0);
    };
    std::vector<tLine> lines;
    BOOST_FOREACH(CBasicGeometry* component, mComponents) {
        if (component->GetType() == kPolyType) {
            tLine line = {static_cast<CPolyBIG*>(component), {}, {}};
            if (!line.poly->GetPolyCloseFlag() && line.poly->GetNumberOfPoints() >= CPolyBIG::kFewestPoints) {
                line.poly->GetFixedColor(line.color);
                findEnds(line);
                lines.push_back(line);
            }
        }
    }
    const auto fit = [](const tLine& a, const tLine& b) {
        const bool meet = std::any_of(std::begin(a.ends), std::end(a.ends), [&b](const CPoint& end) {
            return end.CalcDistance2D(b.ends[0]) <= CPolyBIG::kSamePlace ||
                   end.CalcDistance2D(b.ends[1]) <= CPolyBIG::kSamePlace;
        });
        return meet && a.poly->GetLineThickness() == b.poly->GetLineThickness() &&
               a.poly->GetTrackbedWidth() == b.poly->GetTrackbedWidth() && a.color.red == b.color.red &&
               a.color.green == b.color.green && a.color.blue == b.color.blue;
    };
    int gone = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        for (size_t k = i + 1; k < lines.size() && !lines[i].poly->GetPolyCloseFlag();) {
            if (!fit(lines[i], lines[k]) || !lines[i].poly->Merge(lines[k].poly)) {
                ++k;
                continue;
            }
            DeleteBIG(GetIndexOfBIG(lines[k].poly));
            delete lines[k].poly;
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(k));
            findEnds(lines[i]);
            ++gone;
            k = i + 1; // the new end may meet a line that was passed over
        }
    }
    return gone;
}

void CCompositeGeometry::AlignComponentJointOnPoint(int component, int joint, const CPoint& point)
{
    if (!HasJoint(component, joint)) {
        return;
    }
    DefineAllJoints();
    const CPoint& current = mComponents[static_cast<size_t>(component)]->GetJoint(joint)->GetPosition();
    MoveBy(point.x - current.x, point.y - current.y);
    SetZPosition(mLayout.position.z + point.z - current.z);
    DefineAllJoints();
}

void CCompositeGeometry::RotateBy(double angle)
{
    if (!std::isfinite(angle)) {
        return;
    }
    // The middle of the unturned box is a point of the element, so that turning back restores it; the middle of a
    // turned curve's box is another point at every angle.
    const double turned = mLayout.angle;
    const CPoint origin = mLayout.position;
    if (turned != 0.0) {
        RotateBy(origin, -turned);
    }
    DRect box = {};
    CalcPlacedBox(box);
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
    if (!std::isfinite(angle)) {
        return;
    }
    const CPoint pivot = UReach::Clamp(centre) - mLayout.position;
    const double turned = std::fmod(mLayout.angle + angle, 360.0);
    DRect before = {};
    CalcPlacedBox(before);
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
    DRect after = {};
    CalcPlacedBox(after);
    const CPoint corner(after.left - before.left, after.top - before.top, 0.0);
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
    if (!std::isfinite(angle)) {
        return;
    }
    const double reduced = std::fmod(angle, 360.0);
    RotateBy(reduced - mLayout.angle);
    mLayout.angle = reduced;
}

#include "CTrackLayer.h"

#include "Articles.h"
#include "CPlan.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/UGrades.h"
#include "KVUNum/Angles.h"

#include <cmath>

namespace {
/// Longest piece of flexible track that is sold.
constexpr double kFlexLength = 900.0;
/// Distance of the points that shape flexible track, degrees of an arc.
constexpr double kFlexStep = 5.0;
/// By how much a piece may exceed the room that is left for it.
constexpr double kExcess = 0.001;

double Normalised(double angle)
{
    const double reduced = std::fmod(angle, 360.0);
    return reduced < 0.0 ? reduced + 360.0 : reduced;
}

/// The end that a placed joint leaves open. A joint faces into its track.
tTrackEnd EndAt(const CJoint* joint)
{
    return {joint->GetPosition(), Normalised(joint->GetAngle() + 180.0)};
}

/// Length of a track along its joints' line: a curve's own length is that of its radius alone.
double LengthOf(CCompositeGeometry& element)
{
    CBasicGeometry* track = element.GetFirstTrackBIG();
    if (track->GetType() == kCurveType) {
        auto* curve = static_cast<CCurveBIG*>(track);
        return (curve->GetItemRadius() + curve->GetGauge()) * curve->GetItemArcAngle() * kRadiansPerDegree;
    }
    return track->GetTrackLength();
}

/// Moves the element, as it is turned, so that the joint lies on the point.
void AlignJoint(CCompositeGeometry& element, const CJoint* joint, const CPoint& point)
{
    for (size_t i = 0; i < element.GetNumberOfComponents(); ++i) {
        for (int j = 0; j < 2; ++j) {
            if (element.GetComponents()[i]->GetJoint(j) == joint) {
                element.AlignComponentJointOnPoint(static_cast<int>(i), j, point);
                return;
            }
        }
    }
}
} // namespace

std::vector<tTrackEnd> CTrackLayer::Join(std::unique_ptr<CCompositeGeometry> element, size_t entry)
{
    std::vector<CJoint*> joints;
    element->GetJoints(joints, true, true);
    CJoint* joint = joints[entry];
    element->RotateBy(Normalised(mEnd.heading - joint->GetAngle()));
    if (mSlope != 0.0 && joints.size() == 2) {
        CJoint* exit = joints[1 - entry];
        CJoint* lower = mSlope > 0.0 ? joint : exit;
        CJoint* upper = mSlope > 0.0 ? exit : joint;
        const double rise = std::fabs(mSlope) * LengthOf(*element);
        element->SetGrade(UGrades::GetGradeVectorForHeightDiffBetweenJoints(element.get(), lower, upper, rise));
    }
    AlignJoint(*element, joint, mEnd.place);
    std::vector<tTrackEnd> others;
    for (const CJoint* other : joints) {
        if (other != joint) {
            others.push_back(EndAt(other));
        }
    }
    mPlan.Add(std::move(element));
    return others;
}

std::vector<tTrackEnd> CTrackLayer::LayThrough(const tArticle& article, size_t entry, size_t exit)
{
    std::vector<tTrackEnd> others = Join(NewElement(article), entry);
    const auto next = others.begin() + static_cast<std::ptrdiff_t>(exit > entry ? exit - 1 : exit);
    mEnd = *next;
    others.erase(next);
    return others;
}

CTrackLayer& CTrackLayer::Lay(const tArticle& article, int count)
{
    for (int i = 0; i < count; ++i) {
        LayThrough(article, 0, 1);
    }
    return *this;
}

CTrackLayer& CTrackLayer::Left(const tArticle& curve, int count)
{
    for (int i = 0; i < count; ++i) {
        LayThrough(curve, 1, 0);
    }
    return *this;
}

CTrackLayer& CTrackLayer::LayUntil(double x)
{
    const double forward = std::cos(mEnd.heading * kRadiansPerDegree);
    for (const tArticle* article : {&kStraight371, &kStraight185, &kStraight93}) {
        while ((x - mEnd.place.x) * forward > article->a - kExcess) {
            Lay(*article);
        }
    }
    return *this;
}

tTrackEnd CTrackLayer::LayTurnout(const tArticle& turnout)
{
    return LayThrough(turnout, 0, 1).front();
}

tTrackEnd CTrackLayer::LayTrailing(const tArticle& turnout)
{
    return LayThrough(turnout, 1, 0).front();
}

CTrackLayer& CTrackLayer::LayFlexible(std::initializer_list<tArc> arcs)
{
    const tTrackEnd start = mEnd;
    std::vector<CPoint> points = {CPoint::ZeroPos};
    double heading = start.heading;
    for (const tArc& arc : arcs) {
        const double side = arc.sweep > 0.0 ? arc.radius : -arc.radius;
        const double before = heading * kRadiansPerDegree;
        const CPoint centre = points.back() + CPoint(-side * std::sin(before), side * std::cos(before), 0.0);
        const int steps = static_cast<int>(std::ceil(std::fabs(arc.sweep) / kFlexStep));
        for (int i = 1; i <= steps; ++i) {
            const double at = (heading + arc.sweep * i / steps) * kRadiansPerDegree;
            points.push_back(centre + CPoint(side * std::sin(at), -side * std::cos(at), 0.0));
        }
        heading += arc.sweep;
    }
    auto* track = new CFlexTrackBIG;
    track->SpecifyFlexGeometry(0.0, 0.0, points, 0.0, TrackSystem::kTrackbed, kFlexLength);
    track->SetGauge(TrackSystem::kGauge);
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(track);
    element->SetMidRailFlag(0);
    element->SetName("Flex");
    element->SetDescription("Flexgleis 900 mm");
    element->SetPrice(890);
    element->AlignComponentsLeftTop(nullptr);

    // Shaped where it lies, it is turned the right way but for the last bits of its ends.
    element->DefineAllJoints();
    mEnd.heading = track->GetJoint(0)->GetAngle();
    mEnd.place = Join(std::move(element), 0).front().place;
    mEnd.heading = Normalised(heading);
    return *this;
}

void CTrackLayer::Finish(const tArticle& article)
{
    Join(NewElement(article), 0);
}

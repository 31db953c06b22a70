#include "Articles.h"

#include "RomanText.h"
#include "Settle.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Colors.h"
#include "KVUNum/Angles.h"
#include "KVUStr/KVUStr.h"

#include <cmath>
#include <vector>

using namespace TrackSystem;

namespace {
constexpr int kThinLine = 1;
constexpr int kFreePolygon = 1;

/// Where a route has got to, and which way it goes on.
struct tPen {
    double x;
    double y;
    double heading;
};

/// Which ends of a component others may be joined to.
enum eOpen : unsigned { kClosed = 0, kOpenAtStart = 1, kOpenAtEnd = 2, kOpenAtBoth = 3 };

/// Where the components of an article go, and what holds for all of its track.
struct tShaping {
    CCompositeGeometry& element;
    const tLibrary& library;
};

/// The component's end at which a route leaves it.
tPen PenBehind(CBasicGeometry* component, int joint)
{
    component->DefineJoints(CPoint::ZeroPos, 0.0, CGradeVector::ZeroGrade, CBasicGeometry::kPlaceForConnection);
    const CJoint* end = component->GetJoint(joint);
    return {end->GetPosition().x, end->GetPosition().y, end->GetAngle() - 180.0};
}

tPen AddStraight(const tShaping& to, const tPen& from, double length, unsigned open)
{
    auto* straight = new CStraightBIG;
    straight->SpecifyStraightGeometry(0.0, 0.0, length, from.heading, to.library.gauge, to.library.trackbed,
                                      (open & kOpenAtStart) != 0, (open & kOpenAtEnd) != 0);
    straight->SetJointPos(0, from.x, from.y);
    to.element.AppendBIG(straight);
    return PenBehind(straight, 1);
}

/// A curve to the right for a positive sweep. One to the left is the same piece from its other end.
tPen AddCurve(const tShaping& to, const tPen& from, double radius, double sweep, unsigned open)
{
    const bool toLeft = sweep < 0.0;
    const int entry = toLeft ? 1 : 0;
    const double arc = std::fabs(sweep);
    const bool openAtStart = (open & kOpenAtStart) != 0;
    const bool openAtEnd = (open & kOpenAtEnd) != 0;
    auto* curve = new CCurveBIG;
    // The joints of a curve lie at its radius plus its gauge: the system's radii are those of the joints.
    curve->SpecifyCurveGeometry(
        0.0, 0.0, radius - to.library.gauge, arc, toLeft ? from.heading + 180.0 - arc : from.heading, to.library.gauge,
        to.library.trackbed, toLeft ? openAtEnd : openAtStart, toLeft ? openAtStart : openAtEnd);
    curve->SetJointPos(entry, from.x, from.y);
    to.element.AppendBIG(curve);
    return PenBehind(curve, 1 - entry);
}

void AddLine(CCompositeGeometry& element, const std::vector<CPoint>& points, bool closed)
{
    auto* line = new CPolyBIG;
    line->SpecifyPolyGeometry(0.0, 0.0, points, 0.0, kThinLine, kFreePolygon);
    line->SetPolyCloseFlag(closed);
    element.AppendBIG(line);
}

void AddRectangle(CCompositeGeometry& element, double left, double top, double width, double height)
{
    AddLine(element,
            {{left, top, 0.0}, {left + width, top, 0.0}, {left + width, top + height, 0.0}, {left, top + height, 0.0}},
            true);
}

void AddCircle(CCompositeGeometry& element, double x, double y, double radius)
{
    auto* circle = new COvalBIG;
    circle->SpecifyOvalGeometry(x - radius, y - radius, radius, kThinLine);
    element.AppendBIG(circle);
}

/// Lengths of a turnout, see TrackSystem.h.
struct tTurnout {
    double through; ///< the straight route
    double branch;  ///< straight part of the branch
};

constexpr tTurnout kTurnout = {kUnit, kBranchStraight};

/// The same for another radius and angle.
tTurnout TurnoutOf(double spacing, double radius, double angle)
{
    const double turn = std::fabs(angle) * kRadiansPerDegree;
    const double tangent = radius * std::tan(turn / 2.0);
    const double arm = spacing / (2.0 * std::sin(turn));
    return {Settled(tangent + arm * std::cos(turn)), Settled(arm - tangent)};
}

void AddThroughRoute(const tShaping& to, const tTurnout& turnout)
{
    AddStraight(to, {0.0, 0.0, 0.0}, turnout.through, kOpenAtBoth);
}

/// The branch of a turnout whose toe is at the origin.
void AddBranch(const tShaping& to, const tTurnout& turnout, double radius, double angle)
{
    const tPen behindCurve = AddCurve(to, {0.0, 0.0, 0.0}, radius, angle, kClosed);
    AddStraight(to, behindCurve, turnout.branch, kOpenAtEnd);
}

void AddTurnout(const tShaping& to, double angle)
{
    AddThroughRoute(to, kTurnout);
    AddBranch(to, kTurnout, kTurnoutRadius, angle);
}

/// The two routes of a crossing in a ladder.
void AddCrossing(const tShaping& to, double angle)
{
    const double sine = angle < 0.0 ? -kSine : kSine;
    AddStraight(to, {-kArm * kCosine, 0.0, 0.0}, kCrossingLength, kOpenAtBoth);
    AddStraight(to, {-kArm * kCosine, -kArm * sine, angle}, kLadderStep, kOpenAtBoth);
}

CPoint PointAt(double radius, double angle)
{
    return {radius * std::cos(angle * kRadiansPerDegree), radius * std::sin(angle * kRadiansPerDegree), 0.0};
}

tPen TowardsMiddle(double radius, double angle)
{
    const CPoint point = PointAt(radius, angle);
    return {point.x, point.y, angle + 180.0};
}

/// Direction of a turntable's stall.
double StallAngle(int stall)
{
    return (stall - (kTurntableStalls - 1) / 2.0) * kTurntablePitch;
}
} // namespace

void Shapes::Straight(CCompositeGeometry& element, const tArticle& article)
{
    AddStraight({element, *article.library}, {0.0, 0.0, 0.0}, article.a, kOpenAtBoth);
}

void Shapes::Curve(CCompositeGeometry& element, const tArticle& article)
{
    AddCurve({element, *article.library}, {0.0, 0.0, 0.0}, article.a, article.b, kOpenAtBoth);
}

void Shapes::Flexible(CCompositeGeometry& element, const tArticle& article)
{
    auto* track = new CFlexTrackBIG;
    track->SpecifyFlexGeometry(0.0, 0.0, {CPoint::ZeroPos, {article.a, 0.0, 0.0}}, 0.0, article.library->trackbed,
                               article.a);
    track->SetGauge(article.library->gauge);
    element.AppendBIG(track);
}

void Shapes::TurnoutLeft(CCompositeGeometry& element, const tArticle& article)
{
    AddTurnout({element, *article.library}, -kTurnoutAngle);
}

void Shapes::TurnoutRight(CCompositeGeometry& element, const tArticle& article)
{
    AddTurnout({element, *article.library}, kTurnoutAngle);
}

void Shapes::Turnout(CCompositeGeometry& element, const tArticle& article)
{
    const tShaping to = {element, *article.library};
    const tTurnout turnout = TurnoutOf(to.library.spacing, article.a, article.b);
    AddThroughRoute(to, turnout);
    AddBranch(to, turnout, article.a, article.b);
}

void Shapes::ThreeWayTurnout(CCompositeGeometry& element, const tArticle& article)
{
    Turnout(element, article);
    const tShaping to = {element, *article.library};
    AddBranch(to, TurnoutOf(to.library.spacing, article.a, article.b), article.a, -article.b);
}

void Shapes::CurvedTurnout(CCompositeGeometry& element, const tArticle& article)
{
    const tShaping to = {element, *article.library};
    const tPen toe = {0.0, 0.0, 0.0};
    AddCurve(to, toe, article.a, article.b, kOpenAtBoth);
    AddCurve(to, AddStraight(to, toe, to.library.spacing, kClosed), article.a, article.b, kOpenAtEnd);
}

void Shapes::Wye(CCompositeGeometry& element, const tArticle& article)
{
    const tShaping to = {element, *article.library};
    AddCurve(to, {0.0, 0.0, 0.0}, article.a, article.b, kOpenAtBoth);
    AddCurve(to, {0.0, 0.0, 0.0}, article.a, -article.b, kOpenAtEnd);
}

void Shapes::LadderCrossing(CCompositeGeometry& element, const tArticle& article)
{
    AddCrossing({element, *article.library}, article.a);
}

void Shapes::Crossing(CCompositeGeometry& element, const tArticle& article)
{
    const tShaping to = {element, *article.library};
    const double half = article.b / 2.0;
    const double turn = article.a * kRadiansPerDegree;
    AddStraight(to, {-half, 0.0, 0.0}, article.b, kOpenAtBoth);
    AddStraight(to, {-half * std::cos(turn), -half * std::sin(turn), article.a}, article.b, kOpenAtBoth);
}

void Shapes::SingleSlip(CCompositeGeometry& element, const tArticle& article)
{
    // The connection runs between the points where a turnout's curve would begin and end.
    const tShaping to = {element, *article.library};
    AddCrossing(to, article.a);
    AddCurve(to, {-kTangent, 0.0, 0.0}, kTurnoutRadius, article.a, kClosed);
}

void Shapes::DoubleSlip(CCompositeGeometry& element, const tArticle& article)
{
    SingleSlip(element, article);
    const double sine = article.a < 0.0 ? -kSine : kSine;
    AddCurve({element, *article.library}, {-kTangent * kCosine, -kTangent * sine, article.a}, kTurnoutRadius,
             -article.a, kClosed);
}

void Shapes::Bumper(CCompositeGeometry& element, const tArticle& article)
{
    const double size = article.library->gauge / kGauge;
    AddStraight({element, *article.library}, {0.0, 0.0, 0.0}, article.a, kOpenAtStart);
    AddRectangle(element, article.a - 12.0 * size, -18.0 * size, 8.0 * size, 36.0 * size);
}

void Shapes::Turntable(CCompositeGeometry& element, const tArticle& article)
{
    const tShaping to = {element, *article.library};
    constexpr double kPit = kTurntableRadius - 10.0;
    AddStraight(to, TowardsMiddle(kTurntableRadius, 180.0), kTurntableRadius - kPit, kOpenAtStart);
    for (int stall = 0; stall < kTurntableStalls; ++stall) {
        AddStraight(to, TowardsMiddle(kTurntableRadius, StallAngle(stall)), kTurntableRadius - kPit, kOpenAtStart);
    }
    AddStraight(to, {-kPit, 0.0, 0.0}, 2.0 * kPit, kClosed); // the bridge
    AddCircle(element, 0.0, 0.0, kPit);
}

void Shapes::Roundhouse(CCompositeGeometry& element, const tArticle& article)
{
    const double a = article.a;
    const double b = article.b;
    std::vector<CPoint> outline;
    for (int edge = 0; edge <= kTurntableStalls; ++edge) {
        outline.push_back(PointAt(b, StallAngle(edge) - kTurntablePitch / 2.0));
    }
    for (int edge = kTurntableStalls; edge >= 0; --edge) {
        outline.push_back(PointAt(b - a, StallAngle(edge) - kTurntablePitch / 2.0));
    }
    AddLine(element, outline, true);
    for (int wall = 1; wall < kTurntableStalls; ++wall) {
        const double angle = StallAngle(wall) - kTurntablePitch / 2.0;
        AddLine(element, {PointAt(b - a, angle), PointAt(b, angle)}, false);
    }
}

void Shapes::House(CCompositeGeometry& element, const tArticle& article)
{
    const double a = article.a;
    const double b = article.b;
    AddRectangle(element, 0.0, 0.0, a, b);
    if (a >= b) {
        AddLine(element, {{0.0, b / 2.0, 0.0}, {a, b / 2.0, 0.0}}, false);
    } else {
        AddLine(element, {{a / 2.0, 0.0, 0.0}, {a / 2.0, b, 0.0}}, false);
    }
}

void Shapes::Box(CCompositeGeometry& element, const tArticle& article)
{
    const double a = article.a;
    const double b = article.b;
    AddRectangle(element, 0.0, 0.0, a, b);
}

void Shapes::Tree(CCompositeGeometry& element, const tArticle& article)
{
    const double a = article.a;
    const double b = article.b;
    AddCircle(element, a, a, a);
    AddCircle(element, a, a, b);
}

void Shapes::Signal(CCompositeGeometry& element, const tArticle& article)
{
    const double a = article.a;
    const double b = article.b;
    AddRectangle(element, 0.0, 0.0, a, a);
    AddLine(element, {{a, a / 2.0, 0.0}, {2.0 * a, a / 2.0, 0.0}}, false);
    AddCircle(element, 2.0 * a + b, a / 2.0, b);
}

std::unique_ptr<CCompositeGeometry> NewElement(const tArticle& article)
{
    auto element = std::make_unique<CCompositeGeometry>();
    element->SetName(RomanText(article.number).c_str());
    element->SetDescription(RomanText(article.description).c_str());
    element->SetRailSetName(RomanText(article.library->name).c_str());
    tLibraryItemAttributes& attributes = element->GetLibraryItemAttributes();
    KVUStr::strncpy(attributes.manufacturer, RomanText(article.library->manufacturer).c_str(),
                    sizeof attributes.manufacturer);
    element->SetPrice(article.price);
    element->SetCurrency(article.library->currency);
    element->SetModelScale(article.library->modelScale);
    element->GetLayoutItemAttributes().fillColor = ColorOf(article.color);

    article.shape(*element, article);
    element->SetMidRailFlag(0); // two rails
    element->AlignComponentsLeftTop(nullptr);
    return element;
}

#include "Articles.h"

#include "RomanText.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Colors.h"
#include "KVUStr/KVUStr.h"

#include <cmath>
#include <vector>

using namespace TrackSystem;

namespace {
constexpr double kRadiansPerDegree = 0.017453292519943295;
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

/// The component's end at which a route leaves it.
tPen PenBehind(CBasicGeometry* component, int joint)
{
    component->DefineJoints(CPoint::ZeroPos, 0.0, CGradeVector::ZeroGrade, CBasicGeometry::kPlaceForConnection);
    const CJoint* end = component->GetJoint(joint);
    return {end->GetPosition().x, end->GetPosition().y, end->GetAngle() - 180.0};
}

tPen AddStraight(CCompositeGeometry& element, const tPen& from, double length, unsigned open)
{
    auto* straight = new CStraightBIG;
    straight->SpecifyStraightGeometry(0.0, 0.0, length, from.heading, kGauge, kTrackbed, (open & kOpenAtStart) != 0,
                                      (open & kOpenAtEnd) != 0);
    straight->SetJointPos(0, from.x, from.y);
    element.AppendBIG(straight);
    return PenBehind(straight, 1);
}

/// A curve to the right for a positive sweep. One to the left is the same piece from its other end.
tPen AddCurve(CCompositeGeometry& element, const tPen& from, double radius, double sweep, unsigned open)
{
    const bool toLeft = sweep < 0.0;
    const int entry = toLeft ? 1 : 0;
    const double arc = std::fabs(sweep);
    const bool openAtStart = (open & kOpenAtStart) != 0;
    const bool openAtEnd = (open & kOpenAtEnd) != 0;
    auto* curve = new CCurveBIG;
    // The joints of a curve lie at its radius plus its gauge: the system's radii are those of the joints.
    curve->SpecifyCurveGeometry(0.0, 0.0, radius - kGauge, arc, toLeft ? from.heading + 180.0 - arc : from.heading,
                                kGauge, kTrackbed, toLeft ? openAtEnd : openAtStart, toLeft ? openAtStart : openAtEnd);
    curve->SetJointPos(entry, from.x, from.y);
    element.AppendBIG(curve);
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

void AddTurnout(CCompositeGeometry& element, double angle)
{
    const tPen toe = {0.0, 0.0, 0.0};
    AddStraight(element, toe, kUnit, kOpenAtBoth);
    const tPen behindCurve = AddCurve(element, toe, kTurnoutRadius, angle, kClosed);
    AddStraight(element, behindCurve, kBranchStraight, kOpenAtEnd);
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

void Shapes::Straight(CCompositeGeometry& element, double a, double)
{
    AddStraight(element, {0.0, 0.0, 0.0}, a, kOpenAtBoth);
}

void Shapes::Curve(CCompositeGeometry& element, double a, double b)
{
    AddCurve(element, {0.0, 0.0, 0.0}, a, b, kOpenAtBoth);
}

void Shapes::TurnoutLeft(CCompositeGeometry& element, double, double)
{
    AddTurnout(element, -kTurnoutAngle);
}

void Shapes::TurnoutRight(CCompositeGeometry& element, double, double)
{
    AddTurnout(element, kTurnoutAngle);
}

void Shapes::DoubleSlip(CCompositeGeometry& element, double a, double)
{
    // The two connections run between the points where a turnout's curve would begin and end.
    const double sine = a < 0.0 ? -kSine : kSine;
    AddStraight(element, {-kArm * kCosine, 0.0, 0.0}, kCrossingLength, kOpenAtBoth);
    AddStraight(element, {-kArm * kCosine, -kArm * sine, a}, kLadderStep, kOpenAtBoth);
    AddCurve(element, {-kTangent, 0.0, 0.0}, kTurnoutRadius, a, kClosed);
    AddCurve(element, {-kTangent * kCosine, -kTangent * sine, a}, kTurnoutRadius, -a, kClosed);
}

void Shapes::Bumper(CCompositeGeometry& element, double a, double)
{
    AddStraight(element, {0.0, 0.0, 0.0}, a, kOpenAtStart);
    AddRectangle(element, a - 12.0, -18.0, 8.0, 36.0);
}

void Shapes::Turntable(CCompositeGeometry& element, double, double)
{
    constexpr double kPit = kTurntableRadius - 10.0;
    AddStraight(element, TowardsMiddle(kTurntableRadius, 180.0), kTurntableRadius - kPit, kOpenAtStart);
    for (int stall = 0; stall < kTurntableStalls; ++stall) {
        AddStraight(element, TowardsMiddle(kTurntableRadius, StallAngle(stall)), kTurntableRadius - kPit, kOpenAtStart);
    }
    AddStraight(element, {-kPit, 0.0, 0.0}, 2.0 * kPit, kClosed); // the bridge
    AddCircle(element, 0.0, 0.0, kPit);
}

void Shapes::Roundhouse(CCompositeGeometry& element, double a, double b)
{
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

void Shapes::House(CCompositeGeometry& element, double a, double b)
{
    AddRectangle(element, 0.0, 0.0, a, b);
    if (a >= b) {
        AddLine(element, {{0.0, b / 2.0, 0.0}, {a, b / 2.0, 0.0}}, false);
    } else {
        AddLine(element, {{a / 2.0, 0.0, 0.0}, {a / 2.0, b, 0.0}}, false);
    }
}

void Shapes::Box(CCompositeGeometry& element, double a, double b)
{
    AddRectangle(element, 0.0, 0.0, a, b);
}

void Shapes::Tree(CCompositeGeometry& element, double a, double b)
{
    AddCircle(element, a, a, a);
    AddCircle(element, a, a, b);
}

void Shapes::Signal(CCompositeGeometry& element, double a, double b)
{
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
    element->GetLayoutItemAttributes().fillColor = ColorOf(article.color);

    article.shape(*element, article.a, article.b);
    element->SetMidRailFlag(0); // two rails
    element->AlignComponentsLeftTop(nullptr);
    return element;
}

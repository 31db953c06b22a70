#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Platform/Fonts.h"
#include "Source/Geometry/Shapes.h"
#include "Utilities/Geometry/UBezier.h"

#include <algorithm>
#include <functional>

namespace {
/// A line given by its points for parameters from 0 to 1.
using tLine = std::function<CPoint(double)>;

/// The largest value near `middle`, where the value rises and then falls.
double Peak(const std::function<double(double)>& value, double low, double high)
{
    for (int i = 0; i < 80; ++i) {
        const double a = low + (high - low) * 0.382;
        const double b = low + (high - low) * 0.618;
        (value(a) < value(b) ? low : high) = value(a) < value(b) ? a : b;
    }
    return value((low + high) / 2.0);
}

/// The smallest box around lines: dense samples, and the true extreme around each that is farther than its neighbours.
DRect BoxOf(const std::vector<tLine>& lines, int samples)
{
    double farthest[4] = {-INFINITY, -INFINITY, -INFINITY, -INFINITY}; // left, right, top, bottom
    for (const tLine& line : lines) {
        for (int side = 0; side < 4; ++side) {
            const auto value = [&](double t) {
                const CPoint point = line(std::clamp(t, 0.0, 1.0));
                return (side % 2 == 0 ? -1.0 : 1.0) * (side < 2 ? point.x : point.y);
            };
            double before = value(0.0);
            double here = before;
            for (int i = 0; i <= samples; ++i) {
                const double after = value((i + 1.0) / samples);
                if (here >= before && here >= after && here + 2.0 * (here - std::min(before, after)) > farthest[side]) {
                    farthest[side] = std::max(farthest[side], Peak(value, (i - 1.0) / samples, (i + 1.0) / samples));
                }
                before = here;
                here = after;
            }
        }
    }
    return {-farthest[2], -farthest[0], farthest[3], farthest[1]};
}

void ExpectSameBox(const DRect& box, const DRect& outline)
{
    EXPECT_NEAR(box.left, outline.left, kTolerance);
    EXPECT_NEAR(box.top, outline.top, kTolerance);
    EXPECT_NEAR(box.right, outline.right, kTolerance);
    EXPECT_NEAR(box.bottom, outline.bottom, kTolerance);
}

/// A box as it is before the first point counts: no value in it may survive.
DRect BoxOf(CBasicGeometry& component, double angle)
{
    DRect box = {-1e9, -1e9, 1e9, 1e9};
    component.CalcBoundingBox(box, angle);
    return box;
}

/// Points of a polygon as they lie in an element: turned about the middle of their own box, then moved.
std::vector<CPoint> Placed(const CPolyBIG& poly, double angle, double x, double y)
{
    std::vector<CPoint> points = poly.GetPoints();
    const auto byX = std::minmax_element(points.begin(), points.end(), [](auto& a, auto& b) { return a.x < b.x; });
    const auto byY = std::minmax_element(points.begin(), points.end(), [](auto& a, auto& b) { return a.y < b.y; });
    const CPoint middle((byX.first->x + byX.second->x) / 2.0, (byY.first->y + byY.second->y) / 2.0, 0.0);
    for (CPoint& point : points) {
        point = Turned(point, middle, angle) + CPoint(x, y, 0.0);
    }
    return points;
}

/// An edge of the track along one piece of curve, from repeated division of its controls.
tLine Offset(const tBezierSegment& s, double distance)
{
    return [s, distance](double t) {
        const auto mix = [t](tVector2D a, tVector2D b) {
            return tVector2D{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
        };
        const tVector2D a = mix(mix(s.p0, s.p1), mix(s.p1, s.p2));
        const tVector2D b = mix(mix(s.p1, s.p2), mix(s.p2, s.p3));
        const tVector2D point = mix(a, b);
        const double length = std::hypot(b.x - a.x, b.y - a.y);
        return CPoint(point.x - (b.y - a.y) / length * distance, point.y + (b.x - a.x) / length * distance, 0.0);
    };
}
} // namespace

TEST(Box, OfACurveStartsAtItsOffsetAndIsThatOfItsTrackbed)
{
    CRandomShapes random(2);
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        CCurveBIG curve;
        // Right angles, half and whole turns are where a box formula breaks first.
        static constexpr double kRound[] = {0, 30, 90, 180, 270, 360, 450, -90, -180, -360};
        const double arc = random.Bool() ? kRound[random.Below(10)] : random.Between(-800, 800);
        const double angle = random.Bool() ? kRound[random.Below(10)] : random.Between(-800, 800);
        const double radius = random.Below(4) == 0 ? random.Between(0, 20) : random.Between(20, 2000);
        curve.SpecifyCurveGeometry(random.Between(-500, 500), random.Between(-500, 500), radius, arc,
                                   random.Between(-360, 360), random.Between(0, 45), random.Between(0, 80), true, true);
        curve.DefineJoints(CPoint::ZeroPos, angle, CGradeVector::ZeroGrade, CBasicGeometry::kPlaceForTrackMarks);
        const double middle = (radius + curve.GetGauge()) * (arc < 0 ? -1.0 : 1.0);
        const double start = curve.GetAngle() + angle;
        // From joint 0 the circle's centre lies on the side to which the track turns.
        const CPoint first = curve.GetJoint(0)->GetLocalPoint();
        const double toCentre = (start + 90.0) * kRadiansPerDegree;
        const CPoint centre = first + CPoint(std::cos(toCentre), std::sin(toCentre), 0.0) * middle;
        std::vector<tLine> edges;
        for (const double distance : {-0.5, 0.0, 0.5}) {
            edges.push_back([=, width = curve.GetTrackbedWidth()](double t) {
                const double heading = (start + arc * t) * kRadiansPerDegree;
                return centre + CPoint(std::sin(heading), -std::cos(heading), 0.0) * (middle + distance * width);
            });
        }
        const DRect box = BoxOf(curve, angle);
        ExpectSameBox(box, BoxOf(edges, 1000));
        EXPECT_NEAR(box.left, curve.GetItemXOffset(), kTolerance);
        EXPECT_NEAR(box.top, curve.GetItemYOffset(), kTolerance);
        ExpectSamePlace(curve.GetJoint(1)->GetLocalPoint(), edges[1](1.0));
    }
}

TEST(Box, OfAFlexibleTrackIsThatOfItsTrackbedHoweverTight)
{
    CRandomShapes random(4);
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        const double reach = std::pow(10.0, random.Between(0.5, 3.0)); // down to bends far tighter than the trackbed
        const double width = random.Between(0, 60);
        CFlexTrackBIG flex;
        flex.SpecifyFlexGeometry(random.Between(-100, 100), random.Between(-100, 100),
                                 random.Points(2 + random.Below(i % 20 == 0 ? 80 : 6), reach),
                                 random.Between(-360, 360), width, 800);
        const double angle = random.Between(-720, 720);
        const auto points = Placed(flex, flex.GetAngle() + angle, flex.GetItemXOffset(), flex.GetItemYOffset());
        std::vector<tLine> edges;
        UBezier::ForEachSegment(points, [&](const tBezierSegment& segment) {
            edges.push_back(Offset(segment, flex.GetTrackbedWidth() / 2.0));
            edges.push_back(Offset(segment, -flex.GetTrackbedWidth() / 2.0));
        });
        ExpectSameBox(BoxOf(flex, angle), BoxOf(edges, 500));
    }
}

TEST(Box, OfSimpleShapes)
{
    CStraightBIG straight;
    straight.SpecifyStraightGeometry(5, 6, 100, 60, 9, 20, true, true);
    ExpectSameBox(BoxOf(straight, 30), {-35, 45, 65, 65}); // about the middle of its line, (55, 15)
    CPolyBIG poly;
    poly.SpecifyPolyGeometry(10, 20, {{0, 0, 0}, {40, 0, 0}, {40, 10, 0}, {40, 10, 0}}, 30, 1, 1);
    poly.SetTrackbedWidth(4);
    poly.SetPolyCloseFlag(false);
    ExpectSameBox(BoxOf(poly, 60), {5, 25, 47, 37}); // about (30, 25), from (35, 5) by (35, 45) to (25, 45)
    COvalBIG circle;
    circle.SpecifyOvalGeometry(10, 20, 5, 1);
    ExpectSameBox(BoxOf(circle, 77), {20, 10, 30, 20});
    circle.Scale(2, true);
    ExpectSameBox(BoxOf(circle, 0), {40, 20, 60, 40});
    ExpectSamePlace(circle.GetRotationReferencePoint(45), CPoint(30, 50, 0));
}

TEST(Box, OfATextStartsAtTheOriginAndTurnsAboutIt)
{
    CTextBIG text;
    const std::string utf8 = "Gr\xC3\xBC\xC3\x9F";
    double width = 0.0;
    double height = 0.0;
    ASSERT_TRUE(Platform::MeasureText("DejaVu Sans", 24, utf8, width, height));
    ASSERT_GT(width, 24);
    for (const std::string& string : {utf8, std::string("Gr\x9F\xA7")}) { // no UTF-8, so Mac OS Roman
        text.SpecifyTextGeometry(string.c_str(), "DejaVu Sans", 24);
        ExpectSameBox(BoxOf(text, 0), {0, 0, height, width});
    }
    ExpectSameBox(BoxOf(text, 90), {0, -height, width, 0});
    text.MoveItemBy(100, 200);
    text.SetAngle(30);
    DRect placed = {};
    text.CalcPlacedBox(placed, 60);
    ExpectSameBox(placed, {200, 100 - height, 200 + width, 100});
}

TEST(Box, OfAnElementHoldsItsComponents)
{
    CCompositeGeometry element;
    DRect box = {};
    COvalBIG* circle = new COvalBIG;
    circle->SpecifyOvalGeometry(-30, 50, 10, 1);
    element.AppendBIG(circle);
    CPolyBIG* line = new CPolyBIG;
    line->SpecifyPolyGeometry(0, 0, {{0, 0, 0}, {100, 10, 0}}, 0, 1, 1);
    element.AppendBIG(line);
    element.SetPosition(1000, 2000);
    element.SetGrade(CGradeVector({-30, 5, 0}, {70, 5, 0}, 3));
    const CPoint moved = element.AlignComponentsLeftTop(&box);
    ExpectSameBox(box, {0, -30, 70, 100});
    ExpectSamePlace(moved, CPoint(30, 0, 0));
    element.CalcBoundingBox(box);
    ExpectSameBox(box, {0, 0, 70, 130});
    EXPECT_EQ(element.GetPosition().x, 1000);
    EXPECT_EQ(element.GetGrade().GetStartPoint().x, -30) << "as stored";
}

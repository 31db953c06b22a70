#include "Source/Geometry/Shapes.h"
#include "Utilities/Geometry/UBezier.h"

#include <utility>

namespace {
std::vector<tBezierSegment> Segments(const std::vector<CPoint>& points)
{
    std::vector<tBezierSegment> segments;
    const size_t count =
        UBezier::ForEachSegment(points, [&segments](const tBezierSegment& segment) { segments.push_back(segment); });
    EXPECT_EQ(count, segments.size());
    return segments;
}

CPoint At(const tBezierSegment& segment, double t)
{
    const tVector2D point = UBezier::PointAt(segment, t);
    return {point.x, point.y, 0.0};
}

/// Directions at both ends of the curve.
std::pair<double, double> EndAngles(const std::vector<CPoint>& points)
{
    std::pair<double, double> angles = {-1.0, -1.0};
    UBezier::CalcEndAngles(points, angles.first, angles.second);
    return angles;
}

/// Length of the polygon through many points of the curve, which falls short by the square of their distance; that part
/// is taken off by comparing two distances.
double PolylineLength(const std::vector<CPoint>& points, int steps)
{
    double lengths[2] = {};
    for (int pass = 0; pass < 2; ++pass) {
        const int count = steps << pass;
        for (const tBezierSegment& segment : Segments(points)) {
            for (int i = 0; i < count; ++i) {
                lengths[pass] += At(segment, double(i) / count).CalcDistance2D(At(segment, double(i + 1) / count));
            }
        }
    }
    return lengths[1] + (lengths[1] - lengths[0]) / 3.0;
}

std::vector<CPoint> OnCircle(double radius, double start, double step, int count)
{
    std::vector<CPoint> points;
    for (int i = 0; i < count; ++i) {
        points.push_back(Turned({70 + radius, -30, 0}, {70, -30, 0}, start + step * i));
    }
    return points;
}
} // namespace

TEST(UBezier, RunsSmoothlyThroughEveryPoint)
{
    CRandomShapes random(21);
    for (int i = 0; i < 500; ++i) {
        SCOPED_TRACE(i);
        const std::vector<CPoint> points = random.Points(2 + random.Below(8), std::pow(10.0, random.Between(-2, 5)));
        const auto segments = Segments(points);
        ASSERT_EQ(segments.size(), points.size() - 1);
        double polygon = 0.0;
        for (size_t k = 0; k < segments.size(); ++k) {
            EXPECT_LE(At(segments[k], 0.0).CalcDistance2D(points[k]), kTolerance);
            EXPECT_LE(At(segments[k], 1.0).CalcDistance2D(points[k + 1]), kTolerance);
            polygon += points[k].CalcDistance2D(points[k + 1]);
            if (k > 0) {
                const tVector2D before = UBezier::DerivativeAt(segments[k - 1], 1.0);
                const tVector2D after = UBezier::DerivativeAt(segments[k], 0.0);
                EXPECT_LE(
                    AngleBetween(DirectionFrom({}, {before.x, before.y, 0}), DirectionFrom({}, {after.x, after.y, 0})),
                    kTolerance);
                EXPECT_GT(std::hypot(after.x, after.y), 0.0);
            }
        }
        const double length = UBezier::Length(points);
        EXPECT_NEAR(length / PolylineLength(points, 3000), 1.0, 1e-6);
        EXPECT_GE(length, polygon * (1.0 - 1e-6)) << "no shorter than its chords";
        EXPECT_LE(length, polygon * UBezier::kLongestPerChord);
        const CPoint next = At(segments.front(), 1e-7);
        EXPECT_LE(AngleBetween(EndAngles(points).first, DirectionFrom(points.front(), next)), 1e-3);
        const CPoint previous = At(segments.back(), 1.0 - 1e-7);
        EXPECT_LE(AngleBetween(EndAngles(points).second, DirectionFrom(previous, points.back())), 1e-3);
    }
}

TEST(UBezier, ReproducesCircles)
{
    CRandomShapes random(22);
    double worst = 0.0;
    for (int i = 0; i < 100; ++i) {
        const double radius = std::pow(10.0, random.Between(0, 4));
        const double step = i == 0 ? 30.0 : random.Between(2, 30) * (i % 2 == 0 ? 1 : -1);
        const int count = 3 + random.Below(10);
        const auto points = OnCircle(radius, random.Between(-360, 360), step, count);
        for (const tBezierSegment& segment : Segments(points)) {
            for (int k = 0; k <= 64; ++k) {
                worst = std::max(worst, std::fabs(At(segment, k / 64.0).CalcDistance2D({70, -30, 0}) / radius - 1.0));
            }
        }
        EXPECT_NEAR(UBezier::Length(points) / (radius * std::fabs(step) * (count - 1) * kRadiansPerDegree), 1.0, 1e-6);
    }
    EXPECT_LT(worst, 2e-6);
}

TEST(UBezier, PointsThatRepeatFoldOrAreMissing)
{
    const CPoint a(0, 0, 0);
    const CPoint b(100, 0, 0);
    const CPoint c(100, 50, 0);
    const struct {
        const char* what;
        std::vector<CPoint> points;
        size_t pieces;
    } cases[] = {{"none", {}, 0},
                 {"one, repeated", {b, b, b}, 0},
                 {"repeated anywhere", {a, a, b, b, b, c, c}, 2},
                 {"there and back again", {a, b, a, b}, 3},
                 {"closed", {a, b, c, a}, 3},
                 {"in a line", {a, b, {250, 0, 0}}, 2},
                 {"folded in a line", {a, b, {50, 0, 0}}, 2},
                 {"nearly repeated", {a, {1e-7, 0, 0}, b, c}, 3},
                 {"as far as documents reach", {{-2e9, 2e9, 0}, {2e9, 2e9, 0}, {2e9, -2e9, 0}, a, {1e-7, 1e-7, 0}}, 4}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        EXPECT_EQ(Segments(test.points).size(), test.pieces);
        const double length = UBezier::Length(test.points);
        EXPECT_TRUE(test.pieces > 0 ? length > 0.0 && std::isfinite(length) : length == 0.0);
        EXPECT_TRUE(test.pieces > 0 || EndAngles(test.points) == std::pair(0.0, 0.0));
        DRect box = {1, 2, 3, 4};
        UBezier::CalcBox(test.points, {{0.6, 0.8}, {5, 6}, {7, 8}}, 20.0, box);
        EXPECT_EQ(box.bottom - box.top == 2.0, test.points.empty()) << "only without a point it stays";
    }
    EXPECT_NEAR(UBezier::Length({a, b, {250, 0, 0}}), 250.0, 1e-9);
}

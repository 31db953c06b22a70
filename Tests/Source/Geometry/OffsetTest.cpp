#include "Source/Geometry/Shapes.h"
#include "Utilities/Geometry/UBezier.h"

#include <algorithm>

namespace {
/// Track that swings from side to side, each corner drawn as one point or as some close ones.
std::vector<CPoint> Swinging(CRandomShapes& random, int corners)
{
    std::vector<CPoint> points = {random.Point(1000)};
    double heading = random.Between(-180, 180);
    const auto go = [&](double length) { points.push_back(points.back() + Turned({length, 0, 0}, CPoint(), heading)); };
    go(random.Between(600, 900));
    for (int i = 0; i < corners; ++i) {
        const bool close = random.Bool();
        if (close) {
            go(random.Between(50, 150));
        }
        const double turn = random.Between(10, close ? 150 : 110) * (i % 2 == 0 ? 1 : -1);
        for (int k = 0; close && k < 4; ++k) { // straight up to the corner and behind it
            heading += k == 1 || k == 2 ? turn / 3.0 : 0.0;
            go(random.Between(3, 30));
        }
        heading += close ? turn / 3.0 : turn;
        if (close) {
            go(random.Between(10, 50));
            go(random.Between(50, 150));
        }
        go(random.Between(600, 900));
    }
    return points;
}

std::vector<CPoint> Dense(const std::vector<CPoint>& points, const tTurn& turn, int steps)
{
    std::vector<CPoint> line;
    UBezier::ForEachSegment(points, [&](const tBezierSegment& segment) {
        for (int i = 0; i <= steps; ++i) {
            const tVector2D at = turn.Apply(UBezier::PointAt(segment, double(i) / steps));
            line.emplace_back(at.x, at.y, 0.0);
        }
    });
    return line;
}

/// Whether parts far from each other along the curve come so near that lines beside them meet, which is not cut.
bool ComesNearItself(const std::vector<CPoint>& points, double distance)
{
    const std::vector<CPoint> line = Dense(points, {{1, 0}, {0, 0}, {0, 0}}, 30);
    for (size_t i = 0; i < line.size(); ++i) {
        double length = 0.0;
        for (size_t k = i + 1; k < line.size(); ++k) {
            length += line[k].CalcDistance2D(line[k - 1]);
            if (length > 8.0 * distance && line[k].CalcDistance2D(line[i]) < 2.5 * distance) {
                return true;
            }
        }
    }
    return false;
}

double DistanceToLine(const CPoint& point, const std::vector<CPoint>& line)
{
    double nearest = INFINITY;
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        const CPoint along = line[i + 1] - line[i];
        const CPoint to = point - line[i];
        const double square = along.x * along.x + along.y * along.y;
        const double t = square > 0.0 ? std::clamp((to.x * along.x + to.y * along.y) / square, 0.0, 1.0) : 0.0;
        nearest = std::min(nearest, point.CalcDistance2D(line[i] + along * t));
    }
    return nearest;
}

bool Cross(const CPoint& a, const CPoint& b, const CPoint& c, const CPoint& d)
{
    const auto side = [](const CPoint& p, const CPoint& q, const CPoint& r) {
        return (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
    };
    return side(a, b, c) * side(a, b, d) < 0.0 && side(c, d, a) * side(c, d, b) < 0.0;
}

int CountCrossings(const std::vector<CPoint>& line)
{
    int count = 0;
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        for (size_t k = i + 2; k + 1 < line.size(); ++k) {
            count += Cross(line[i], line[i + 1], line[k], line[k + 1]) ? 1 : 0;
        }
    }
    return count;
}
} // namespace

TEST(Offset, KeepsItsDistanceAndNeverCrossesItself)
{
    CRandomShapes random(31);
    for (int i = 0; i < 60; ++i) {
        SCOPED_TRACE(i);
        double distance = random.Between(5, 60) * (random.Bool() ? 1 : -1);
        std::vector<CPoint> points;
        do {
            points = Swinging(random, random.Below(5));
        } while (ComesNearItself(points, std::fabs(distance)));
        if (i == 0) { // a bend hardly tighter than the distance: the line steps back by less than a millimetre
            points = {{829.034913, -945.328803, 0}, {1114.04604, -190.762583, 0}, {1177.78025, 591.663829, 0},
                      {1182.41848, 648.604589, 0},  {1182.75261, 652.706484, 0},  {1185.74946, 655.241484, 0},
                      {1210.86563, 653.093481, 0},  {1236.82327, 650.873514, 0},  {1248.77144, 636.632286, 0},
                      {1328.7179, 541.342772, 0},   {1808.05703, -29.9895097, 0}};
            distance = 49.2459104;
        }
        const double angle = random.Between(-360, 360);
        const tTurn turn = {UArcGeometry::Direction(angle), {random.Between(-99, 99), 7}, {5, -6}};
        const std::vector<CPoint> centre = Dense(points, turn, 400);
        std::vector<CPoint> line;
        tCourse course;
        UBezier::Flatten(points, turn, distance, course);
        UTrackCourse::CalcOffset(course, distance, line);
        ASSERT_GE(line.size(), 2u);
        for (size_t k = 0; k + 1 < line.size(); ++k) {
            for (const CPoint& point : {line[k], (line[k] + line[k + 1]) * 0.5}) {
                ASSERT_NEAR(DistanceToLine(point, centre), std::fabs(distance), 2.0 * UTrackCourse::kFlatness) << k;
            }
        }
        EXPECT_EQ(CountCrossings(line), 0);
        // It begins and ends square to the track, on the side of its sign.
        const CPoint first = line.front() - centre.front();
        const CPoint last = line.back() - centre.back();
        double start = 0.0;
        double end = 0.0;
        UBezier::CalcEndAngles(points, start, end);
        const double square = angle + (distance > 0 ? 90.0 : -90.0);
        EXPECT_LE(AngleBetween(DirectionFrom({}, first), start + square), kTolerance);
        EXPECT_LE(AngleBetween(DirectionFrom({}, last), end + square), kTolerance);
        EXPECT_NEAR(last.CalcDistance2D({}), std::fabs(distance), kTolerance);
    }
}

TEST(Offset, HostileCurvesGiveFewAndFinitePoints)
{
    CRandomShapes random(33);
    std::vector<CPoint> circle;
    for (int i = 0; i <= 12; ++i) {
        circle.push_back(Turned({10, 0, 0}, CPoint(), 30.0 * i));
    }
    std::vector<CPoint> mixed = random.Points(50, 1e308);
    mixed.insert(mixed.begin() + 20, {{NAN, 1, 0}, {INFINITY, -INFINITY, 0}, {1, 2, 0}, {1e200, 3, 0}});
    const struct {
        const char* what;
        std::vector<CPoint> points;
    } cases[] = {{"nearly one spot", random.Points(10000, 1e-9)},
                 {"a scribble", random.Points(10000, 30)},
                 {"as far as documents reach", random.Points(10000, 2147483647.0)},
                 {"a circle of the distance", circle},
                 {"a hairpin", {{0, 0, 0}, {300, 0, 0}, {301, 1, 0}, {300, 2, 0}, {0, 2, 0}}},
                 {"not finite", mixed},
                 {"nothing finite", {{NAN, NAN, 0}, {0, INFINITY, 0}, {NAN, 0, 0}}}};
    for (const auto& test : cases) {
        for (const double distance : {0.0, 10.0, -10.0, 40.0, 1e9, 1e-300, double(INFINITY), double(NAN)}) {
            SCOPED_TRACE(testing::Message() << test.what << " at " << distance);
            tCourse course;
            UBezier::Flatten(test.points, {{0.6, 0.8}, {5, 6}, {7, 8}}, distance, course);
            std::vector<CPoint> line;
            UTrackCourse::CalcOffset(course, distance, line);
            EXPECT_LE(line.size(), 2 * (UBezier::kMostCoursePoints + test.points.size()));
            for (const CPoint& point : line) {
                ASSERT_TRUE(std::isfinite(point.x) && std::isfinite(point.y));
            }
            for (const tCoursePoint& at : course) {
                ASSERT_TRUE(std::isfinite(at.point.x + at.point.y + at.heading.x + at.heading.y + at.length));
            }
        }
    }
}

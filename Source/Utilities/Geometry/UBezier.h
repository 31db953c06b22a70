// The smooth curve through the points of a flexible track.
#pragma once

#include "CPoint/CPoint.h"
#include "CRect/DRect.h"
#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UTrackCourse.h"

#include <cstddef>
#include <vector>

/// A turn about a centre, then a shift.
struct tTurn {
    tDirection direction;
    tVector2D centre;
    tVector2D shift;

    tVector2D Apply(tVector2D p) const
    {
        const double dx = p.x - centre.x;
        const double dy = p.y - centre.y;
        return {shift.x + centre.x + dx * direction.cosine - dy * direction.sine,
                shift.y + centre.y + dy * direction.cosine + dx * direction.sine};
    }
};

/// One cubic Bezier piece from p0 to p3.
struct tBezierSegment {
    tVector2D p0;
    tVector2D p1;
    tVector2D p2;
    tVector2D p3;
};

/// A smooth curve through all points: between two neighbours one cubic piece, at every point a common tangent, that of
/// the circle through the point and its two neighbours. At either end the last piece is laid as an arc. The handles
/// have the length that reproduces a circular arc to the fourth order: through points of a circle every 30° the curve
/// leaves it by less than 2e-6 of the radius. Two points give a straight line. Points that repeat their predecessor are
/// passed over.
class UBezier {
public:
    UBezier() = delete;

    /// Calls `visit(const tBezierSegment&)` for each piece in order. Linear, allocates nothing.
    /// @return the number of pieces; 0 when fewer than two different points are there
    template <typename tVisit>
    static size_t ForEachSegment(const std::vector<CPoint>& points, tVisit visit);

    static tVector2D PointAt(const tBezierSegment& segment, double t);
    /// Derivative by t.
    static tVector2D DerivativeAt(const tBezierSegment& segment, double t);
    /// A curve is no shorter than the polygon through its points, and at most this many times as long: no handle is
    /// longer than two thirds of its chord, so the controls of a piece are at most 1 + 2 × (2/3 + 2/3) chords long.
    static constexpr double kLongestPerChord = 11.0 / 3.0;
    /// Length of the curve by adaptive quadrature, to 1e-6 of itself.
    static double Length(const std::vector<CPoint>& points);
    /// Length of the curve from its start to each of the points.
    static std::vector<double> PointLengths(const std::vector<CPoint>& points);
    /// Directions of travel in degrees at the start and the end of the curve; 0 when it has no piece.
    static void CalcEndAngles(const std::vector<CPoint>& points, double& start, double& end);
    /// Smallest box around the turned curve and its two offset curves at `halfWidth` on either side (0 for the curve
    /// alone), to 1e-9 of the size. Without a piece the box of the points; without a point `box` stays.
    static void CalcBox(const std::vector<CPoint>& points, const tTurn& turn, double halfWidth, DRect& box);

    /// Points of a course made by Flatten at the most, besides one for each point of the curve.
    static constexpr size_t kMostCoursePoints = 65536;
    /// Appends the course of the turned curve, dense enough for lines beside it up to `reach` (mm) away, as far as
    /// 1,024 points for each piece of the curve allow. Pieces with coordinates beyond 1e100 are left out; nothing is
    /// appended when no piece is there.
    static void Flatten(const std::vector<CPoint>& points, const tTurn& turn, double reach, tCourse& course);
    /// The same of pieces that follow each other.
    static void Flatten(const std::vector<tBezierSegment>& segments, double reach, tCourse& course);

private:
    /// Direction of travel in degrees at the point `at`, the first of the curve,
    /// or the last where the iterators run backwards.
    template <bool kFromBehind, typename tIterator>
    static double EndAngle(tIterator at, tIterator stop);
    /// Direction of the circle through three points at the middle one, of any length;
    /// from the next chord where they fold.
    static tVector2D Tangent(const CPoint& before, const CPoint& at, const CPoint& after);
    /// `direction` mirrored on the chord: the tangent at the other end of an arc over it.
    static tVector2D Mirrored(tVector2D direction, const CPoint& from, const CPoint& to);
    static tBezierSegment Segment(const CPoint& from, tVector2D fromTangent, const CPoint& to, tVector2D toTangent);
    static size_t NextDifferent(const std::vector<CPoint>& points, size_t index);
};

template <typename tVisit>
size_t UBezier::ForEachSegment(const std::vector<CPoint>& points, tVisit visit)
{
    size_t count = 0;
    size_t from = 0;
    size_t to = points.empty() ? 0 : NextDifferent(points, 0);
    tVector2D fromTangent = {};
    while (to < points.size()) {
        const size_t after = NextDifferent(points, to);
        tVector2D toTangent;
        if (after < points.size()) {
            toTangent = Tangent(points[from], points[to], points[after]);
            if (count == 0) {
                fromTangent = Mirrored(toTangent, points[from], points[to]);
            }
        } else if (count == 0) {
            toTangent = fromTangent = {points[to].x - points[from].x, points[to].y - points[from].y};
        } else {
            toTangent = Mirrored(fromTangent, points[from], points[to]);
        }
        visit(Segment(points[from], fromTangent, points[to], toTangent));
        ++count;
        from = to;
        to = after;
        fromTangent = toTangent;
    }
    return count;
}

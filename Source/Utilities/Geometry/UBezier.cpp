#include "Utilities/Geometry/UBezier.h"

#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kDegreesPerRadian = 57.29577951308232;
/// Accuracy of a length, of the whole.
constexpr double kLengthTolerance = 1e-7;
/// Halvings of a piece while its length is measured; bounds the work on wild points.
constexpr int kDeepestHalving = 16;
/// Steps in which a tight piece is searched for the turning points of its offset curves.
constexpr int kTightSteps = 32;
/// Bisections that narrow a turning point down to the last bits.
constexpr int kBisections = 60;

double Dot(tVector2D a, tVector2D b)
{
    return a.x * b.x + a.y * b.y;
}

tVector2D Difference(tVector2D a, tVector2D b)
{
    return {a.x - b.x, a.y - b.y};
}

/// Five-point Gauss-Legendre of the speed over [a, b].
double GaussLength(const tBezierSegment& segment, double a, double b)
{
    static constexpr double kNodes[] = {0.0, 0.5384693101056831, 0.9061798459386640};
    static constexpr double kWeights[] = {0.5688888888888889, 0.4786286704993665, 0.2369268850561891};
    const double middle = (a + b) / 2.0;
    const double half = (b - a) / 2.0;
    const auto speed = [&segment](double t) {
        const tVector2D derivative = UBezier::DerivativeAt(segment, t);
        return std::hypot(derivative.x, derivative.y);
    };
    double sum = kWeights[0] * speed(middle);
    for (int i = 1; i < 3; ++i) {
        sum += kWeights[i] * (speed(middle - half * kNodes[i]) + speed(middle + half * kNodes[i]));
    }
    return sum * half;
}

double AdaptiveLength(const tBezierSegment& segment, double a, double b, double whole, int depth)
{
    const double middle = (a + b) / 2.0;
    const double left = GaussLength(segment, a, middle);
    const double right = GaussLength(segment, middle, b);
    if (depth == 0 || std::fabs(left + right - whole) <= kLengthTolerance * (left + right)) {
        return left + right;
    }
    return AdaptiveLength(segment, a, middle, left, depth - 1) + AdaptiveLength(segment, middle, b, right, depth - 1);
}

/// Calls `use` with the parameters inside (0, 1) at which a coordinate with these derivative controls stands still.
template <typename tUse>
void ForEachRoot(double d0, double d1, double d2, tUse use)
{
    // d0 (1-t)^2 + 2 d1 t (1-t) + d2 t^2
    const double a = d0 - 2.0 * d1 + d2;
    const double b = d1 - d0;
    const double discriminant = b * b - a * d0;
    if (discriminant < 0.0) {
        return;
    }
    // The root that adds up without cancelling, then the other by Vieta.
    const double q = -(b + std::copysign(std::sqrt(discriminant), b));
    const double roots[] = {a != 0.0 ? q / a : -1.0, q != 0.0 ? d0 / q : -1.0};
    for (const double t : roots) {
        if (t > 0.0 && t < 1.0) {
            use(t);
        }
    }
}

/// Grows a box over the curve points and their offsets on both sides.
class COffsetBox {
public:
    COffsetBox(DRect& box, double halfWidth) : mGrow(box), mHalfWidth(halfWidth) {}

    void Add(const tBezierSegment& segment)
    {
        const tVector2D d0 = Difference(segment.p1, segment.p0);
        const tVector2D d1 = Difference(segment.p2, segment.p1);
        const tVector2D d2 = Difference(segment.p3, segment.p2);
        AddAt(segment, 0.0);
        AddAt(segment, 1.0);
        ForEachRoot(d0.x, d1.x, d2.x, [&](double t) { AddAt(segment, t); });
        ForEachRoot(d0.y, d1.y, d2.y, [&](double t) { AddAt(segment, t); });
        if (mHalfWidth != 0.0 && MayBeTight(segment, d0, d1, d2)) {
            AddTurningPoints(segment);
        }
    }

private:
    void AddAt(const tBezierSegment& segment, double t)
    {
        const tVector2D point = UBezier::PointAt(segment, t);
        const tVector2D derivative = UBezier::DerivativeAt(segment, t);
        const double speed = std::hypot(derivative.x, derivative.y);
        const double scale = speed > 0.0 ? mHalfWidth / speed : 0.0;
        mGrow.Update(point.x - derivative.y * scale, point.y + derivative.x * scale);
        mGrow.Update(point.x + derivative.y * scale, point.y - derivative.x * scale);
    }

    /// Whether the curve may bend with a radius below half the width: from the smallest speed along the chord and the
    /// largest second derivative that the controls allow.
    bool MayBeTight(const tBezierSegment& segment, tVector2D d0, tVector2D d1, tVector2D d2) const
    {
        const tVector2D chord = Difference(segment.p3, segment.p0);
        const double length = std::hypot(chord.x, chord.y);
        if (length == 0.0) {
            return true;
        }
        const double slowest = 3.0 * std::min({Dot(d0, chord), Dot(d1, chord), Dot(d2, chord)}) / length;
        const tVector2D e0 = Difference(d1, d0);
        const tVector2D e1 = Difference(d2, d1);
        const double second = 6.0 * std::max(std::hypot(e0.x, e0.y), std::hypot(e1.x, e1.y));
        return slowest <= 0.0 || second * std::fabs(mHalfWidth) > slowest * slowest;
    }

    /// 1 - (curvature × half width)²: where it changes sign an offset curve turns back and may have its extreme point.
    double Tightness(const tBezierSegment& segment, double t) const
    {
        const tVector2D first = UBezier::DerivativeAt(segment, t);
        const tVector2D second = {6.0 * ((1.0 - t) * (segment.p2.x - 2.0 * segment.p1.x + segment.p0.x) +
                                         t * (segment.p3.x - 2.0 * segment.p2.x + segment.p1.x)),
                                  6.0 * ((1.0 - t) * (segment.p2.y - 2.0 * segment.p1.y + segment.p0.y) +
                                         t * (segment.p3.y - 2.0 * segment.p2.y + segment.p1.y))};
        const double cross = (first.x * second.y - first.y * second.x) * mHalfWidth;
        const double speed2 = Dot(first, first);
        return speed2 * speed2 * speed2 - cross * cross;
    }

    void AddTurningPoints(const tBezierSegment& segment)
    {
        double low = 0.0;
        double lowValue = Tightness(segment, low);
        for (int i = 1; i <= kTightSteps; ++i) {
            const double high = static_cast<double>(i) / kTightSteps;
            const double highValue = Tightness(segment, high);
            if ((lowValue < 0.0) != (highValue < 0.0)) {
                double a = low;
                double b = high;
                for (int step = 0; step < kBisections; ++step) {
                    const double middle = (a + b) / 2.0;
                    ((Tightness(segment, middle) < 0.0) == (lowValue < 0.0) ? a : b) = middle;
                }
                AddAt(segment, a);
            }
            low = high;
            lowValue = highValue;
        }
    }

    CCalcBoundingBox mGrow;
    double mHalfWidth;
};
} // namespace

size_t UBezier::NextDifferent(const std::vector<CPoint>& points, size_t index)
{
    size_t next = index + 1;
    while (next < points.size() && points[next].x == points[index].x && points[next].y == points[index].y) {
        ++next;
    }
    return next;
}

tVector2D UBezier::Tangent(const CPoint& before, const CPoint& at, const CPoint& after)
{
    // Inversion about the middle point maps the circle to a line of the tangent's direction.
    const tVector2D in = {at.x - before.x, at.y - before.y};
    const tVector2D out = {after.x - at.x, after.y - at.y};
    const double in2 = Dot(in, in);
    const double out2 = Dot(out, out);
    const tVector2D tangent = {in.x * out2 + out.x * in2, in.y * out2 + out.y * in2};
    if (std::hypot(tangent.x, tangent.y) <= 1e-12 * in2 * std::sqrt(out2)) {
        return {-out.y, out.x}; // there and back: turn around the tip
    }
    return tangent;
}

tVector2D UBezier::Mirrored(tVector2D direction, const CPoint& from, const CPoint& to)
{
    const tVector2D chord = {to.x - from.x, to.y - from.y};
    const double factor = 2.0 * Dot(direction, chord) / Dot(chord, chord);
    return {factor * chord.x - direction.x, factor * chord.y - direction.y};
}

tBezierSegment UBezier::Segment(const CPoint& from, tVector2D fromTangent, const CPoint& to, tVector2D toTangent)
{
    const tVector2D chord = {to.x - from.x, to.y - from.y};
    const double length = std::hypot(chord.x, chord.y);
    const double fromLength = std::hypot(fromTangent.x, fromTangent.y);
    const double toLength = std::hypot(toTangent.x, toTangent.y);
    // An arc over chord c that leaves it at angle a has handles of 2 c / (3 (1 + cos a)). Past a right angle the
    // handles grow no further: they would make loops.
    const auto scale = [length](double cosine, double tangentLength) {
        return 2.0 * length / (3.0 * (1.0 + std::max(cosine, 0.0))) / tangentLength;
    };
    const double fromScale = scale(Dot(fromTangent, chord) / (fromLength * length), fromLength);
    const double toScale = scale(Dot(toTangent, chord) / (toLength * length), toLength);
    return {{from.x, from.y},
            {from.x + fromTangent.x * fromScale, from.y + fromTangent.y * fromScale},
            {to.x - toTangent.x * toScale, to.y - toTangent.y * toScale},
            {to.x, to.y}};
}

tVector2D UBezier::PointAt(const tBezierSegment& segment, double t)
{
    const double u = 1.0 - t;
    const double a = u * u * u;
    const double b = 3.0 * u * u * t;
    const double c = 3.0 * u * t * t;
    const double d = t * t * t;
    return {a * segment.p0.x + b * segment.p1.x + c * segment.p2.x + d * segment.p3.x,
            a * segment.p0.y + b * segment.p1.y + c * segment.p2.y + d * segment.p3.y};
}

tVector2D UBezier::DerivativeAt(const tBezierSegment& segment, double t)
{
    const double u = 1.0 - t;
    const double a = 3.0 * u * u;
    const double b = 6.0 * u * t;
    const double c = 3.0 * t * t;
    return {a * (segment.p1.x - segment.p0.x) + b * (segment.p2.x - segment.p1.x) + c * (segment.p3.x - segment.p2.x),
            a * (segment.p1.y - segment.p0.y) + b * (segment.p2.y - segment.p1.y) + c * (segment.p3.y - segment.p2.y)};
}

double UBezier::Length(const std::vector<CPoint>& points)
{
    double length = 0.0;
    ForEachSegment(points, [&length](const tBezierSegment& segment) {
        length += AdaptiveLength(segment, 0.0, 1.0, GaussLength(segment, 0.0, 1.0), kDeepestHalving);
    });
    return length;
}

double UBezier::StartAngle(const std::vector<CPoint>& points)
{
    double angle = 0.0;
    bool first = true;
    ForEachSegment(points, [&](const tBezierSegment& segment) {
        if (first) {
            angle = std::atan2(segment.p1.y - segment.p0.y, segment.p1.x - segment.p0.x) * kDegreesPerRadian;
            first = false;
        }
    });
    return angle;
}

double UBezier::EndAngle(const std::vector<CPoint>& points)
{
    double angle = 0.0;
    ForEachSegment(points, [&angle](const tBezierSegment& segment) {
        angle = std::atan2(segment.p3.y - segment.p2.y, segment.p3.x - segment.p2.x) * kDegreesPerRadian;
    });
    return angle;
}

void UBezier::CalcBox(const std::vector<CPoint>& points, const tTurn& turn, double halfWidth, DRect& box)
{
    COffsetBox offset(box, halfWidth);
    const auto add = [&](const tBezierSegment& segment) {
        offset.Add({turn.Apply(segment.p0), turn.Apply(segment.p1), turn.Apply(segment.p2), turn.Apply(segment.p3)});
    };
    if (ForEachSegment(points, add) == 0) {
        CCalcBoundingBox grow(box);
        for (const CPoint& point : points) {
            const tVector2D placed = turn.Apply({point.x, point.y});
            grow.Update(placed.x, placed.y);
        }
    }
}

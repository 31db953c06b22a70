#include "Utilities/Geometry/UBezier.h"

#include "KVUNum/Angles.h"
#include "Utilities/Geometry/CCalcBoundingBox.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {
/// Accuracy of a length, of the whole.
constexpr double kLengthTolerance = 1e-7;
/// Halvings of a piece while its length is measured; bounds the work on wild points.
constexpr int kDeepestHalving = 16;
/// Steps in which the extremes of the curvature are searched between its inflections and the slowest points.
constexpr int kCurvatureSteps = 8;
/// Bisections that narrow a turning point down to the last bits.
constexpr int kBisections = 60;
/// What the coordinates of a box may lose by rounding, of their size.
constexpr double kRounding = 4e-15;
/// Halvings of a piece for its course: no fewer, so that an S is not taken for a line, and no more.
constexpr int kLeastCourseDepth = 2;
constexpr int kDeepestCourse = 8;
/// The smallest turn worth a step of its own, in radians; bounds what a piece of curve can come to.
constexpr double kSmallestStep = kPi / 64.0;
/// More points than one piece can come to: 512 for its halvings, 64 for each half turn that a cubic can make.
constexpr size_t kMostPerPiece = 1024;
/// Coordinates beyond this would overflow when they are squared and multiplied.
constexpr double kFarthest = 1e100;

double Dot(tVector2D a, tVector2D b)
{
    return a.x * b.x + a.y * b.y;
}

double Cross(tVector2D a, tVector2D b)
{
    return a.x * b.y - a.y * b.x;
}

/// Coordinates of documents stay far from where squares overflow, so std::hypot would only be slower.
double Norm(tVector2D v)
{
    return std::sqrt(Dot(v, v));
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
    const auto speed = [&segment](double t) { return Norm(UBezier::DerivativeAt(segment, t)); };
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

/// Grows a box over the curve points and their offsets on both sides: first over all pieces, then, where NeedsSearch
/// says so, over what only a search finds.
class COffsetBox {
public:
    COffsetBox(DRect& box, double halfWidth) : mBox(box), mGrow(box), mHalfWidth(std::fabs(halfWidth)) {}

    /// Adds the ends of a piece, and where it runs level or upright: there a line beside it is as far out as it gets,
    /// unless it bends more tightly than its distance.
    void Add(const tBezierSegment& segment)
    {
        // The end of a piece is the start of the next; only the first piece adds both.
        if (!mStarted) {
            AddPoint(segment.p0, Difference(segment.p1, segment.p0));
            mStarted = true;
        }
        if (Holds(BoxOf({segment.p0, segment.p1, segment.p2, segment.p3}), kRounding)) {
            return;
        }
        const tVector2D d0 = Difference(segment.p1, segment.p0);
        const tVector2D d1 = Difference(segment.p2, segment.p1);
        const tVector2D d2 = Difference(segment.p3, segment.p2);
        AddPoint(segment.p3, d2);
        ForEachExtreme(d0, d1, d2, [&](double t) { AddAt(segment, t); });
        mNeedsSearch = mNeedsSearch || (mHalfWidth != 0.0 && MayBeTight(segment, d0, d1, d2));
    }

    bool NeedsSearch() const { return mNeedsSearch; }

    /// Adds what a tight bend in a piece comes to. The search is dear, and only a bend near an open end, where the
    /// curve itself reaches out and the square end of its lines does not, can come to anything.
    void Search(const tBezierSegment& segment)
    {
        DRect box = BoxOf({segment.p0, segment.p1, segment.p2, segment.p3});
        if (Holds(box, -kRounding)) {
            return;
        }
        const tVector2D d0 = Difference(segment.p1, segment.p0);
        const tVector2D d1 = Difference(segment.p2, segment.p1);
        const tVector2D d2 = Difference(segment.p3, segment.p2);
        CCalcBoundingBox grow(box);
        grow.Update(segment.p0.x, segment.p0.y);
        grow.Update(segment.p3.x, segment.p3.y);
        ForEachExtreme(d0, d1, d2, [&](double t) {
            const tVector2D point = UBezier::PointAt(segment, t);
            grow.Update(point.x, point.y);
        });
        if (!Holds(box, -kRounding) && MayBeTight(segment, d0, d1, d2)) {
            AddTurningPoints(d0, d1, d2, segment);
        }
    }

private:
    static DRect BoxOf(std::initializer_list<tVector2D> points)
    {
        DRect box = {};
        CCalcBoundingBox grow(box);
        for (const tVector2D point : points) {
            grow.Update(point.x, point.y);
        }
        return box;
    }

    /// Whether the box holds all that lies within half the width of a part of the curve, with so much to spare of what
    /// the coordinates come to; below 0 it may lack as much.
    bool Holds(const DRect& part, double spare) const
    {
        const double size =
            std::max({std::fabs(mBox.left), std::fabs(mBox.right), std::fabs(mBox.top), std::fabs(mBox.bottom)});
        const double reach = mHalfWidth + spare * (size + mHalfWidth);
        return part.left - reach >= mBox.left && part.right + reach <= mBox.right && part.top - reach >= mBox.top &&
               part.bottom + reach <= mBox.bottom;
    }

    /// Calls `use` where a piece with these derivative controls runs level or upright.
    template <typename tUse>
    static void ForEachExtreme(tVector2D d0, tVector2D d1, tVector2D d2, tUse use)
    {
        ForEachRoot(d0.x, d1.x, d2.x, use);
        ForEachRoot(d0.y, d1.y, d2.y, use);
    }

    void AddAt(const tBezierSegment& segment, double t)
    {
        AddPoint(UBezier::PointAt(segment, t), UBezier::DerivativeAt(segment, t));
    }

    /// Grows over a point of the curve and both points across it.
    void AddPoint(tVector2D point, tVector2D derivative)
    {
        const double speed = Norm(derivative);
        const double scale = speed > 0.0 ? mHalfWidth / speed : 0.0;
        mGrow.Update(point.x - derivative.y * scale, point.y + derivative.x * scale);
        mGrow.Update(point.x + derivative.y * scale, point.y - derivative.x * scale);
    }

    /// Whether the curve may bend with a radius below half the width: from the smallest speed along the chord and the
    /// largest second derivative that the controls allow.
    bool MayBeTight(const tBezierSegment& segment, tVector2D d0, tVector2D d1, tVector2D d2) const
    {
        const tVector2D chord = Difference(segment.p3, segment.p0);
        const double length = Norm(chord);
        if (length == 0.0) {
            return true;
        }
        const double slowest = 3.0 * std::min({Dot(d0, chord), Dot(d1, chord), Dot(d2, chord)}) / length;
        const tVector2D e0 = Difference(d1, d0);
        const tVector2D e1 = Difference(d2, d1);
        const double second = 6.0 * std::max(Norm(e0), Norm(e1));
        return slowest <= 0.0 || second * mHalfWidth > slowest * slowest;
    }

    /// Adds where the curvature passes that of the half width: an offset curve turns back there and may have its
    /// extreme point.
    void AddTurningPoints(tVector2D d0, tVector2D d1, tVector2D d2, const tBezierSegment& segment)
    {
        // The derivative, but for its factor 3: a + b t + c t².
        const tVector2D a = d0;
        const tVector2D b = {2.0 * (d1.x - d0.x), 2.0 * (d1.y - d0.y)};
        const tVector2D c = {d0.x - 2.0 * d1.x + d2.x, d0.y - 2.0 * d1.y + d2.y};
        const auto speed2 = [&](double t) {
            const double x = a.x + (b.x + c.x * t) * t;
            const double y = a.y + (b.y + c.y * t) * t;
            return x * x + y * y;
        };
        const auto cross = [&](double t) { return Cross(a, b) + (2.0 * Cross(a, c) + Cross(b, c) * t) * t; };
        const auto halfSpeed2Slope = [&](double t) {
            return Dot(a, b) + (Dot(b, b) + 2.0 * Dot(a, c) + (3.0 * Dot(b, c) + 2.0 * Dot(c, c) * t) * t) * t;
        };
        const auto curvatureSlope = [&](double t) {
            return (2.0 * Cross(a, c) + 2.0 * Cross(b, c) * t) * speed2(t) - 3.0 * cross(t) * halfSpeed2Slope(t);
        };
        // 1 - (curvature × half width)², times the speed's sixth power.
        const auto room = [&](double t) {
            const double bend = cross(t) * mHalfWidth / 3.0;
            return speed2(t) * speed2(t) * speed2(t) - bend * bend;
        };
        // Between these the curvature has one sign and only rises or only falls. A hairpin's peak may be as narrow as
        // one likes, so it cannot be sampled for; but it lies at an end of one of the pieces between the slowest
        // points and the inflections.
        std::vector<double> stops = {0.0, 1.0};
        const auto add = [&stops](double t) { stops.push_back(t); };
        const auto addQuadratic = [&add](double q0, double q1, double q2) {
            ForEachRoot(q0, q0 + q1 / 2.0, q0 + q1 + q2, add);
        };
        addQuadratic(Cross(a, b), 2.0 * Cross(a, c), Cross(b, c));
        addQuadratic(Dot(b, b) + 2.0 * Dot(a, c), 6.0 * Dot(b, c), 6.0 * Dot(c, c));
        AddSignChanges(stops, 1, halfSpeed2Slope);
        AddSignChanges(stops, kCurvatureSteps, curvatureSlope);
        const size_t known = stops.size();
        AddSignChanges(stops, 1, room);
        if (stops.size() != known) {
            for (const double t : stops) {
                AddAt(segment, t);
            }
        }
    }

    /// Adds to the sorted stops where a function changes its sign, seen in so many steps between two of them.
    template <typename tFunction>
    static void AddSignChanges(std::vector<double>& stops, int steps, tFunction function)
    {
        std::sort(stops.begin(), stops.end());
        const size_t count = stops.size();
        for (size_t i = 0; i + 1 < count; ++i) {
            for (int step = 0; step < steps; ++step) {
                double low = stops[i] + (stops[i + 1] - stops[i]) * step / steps;
                double high = stops[i] + (stops[i + 1] - stops[i]) * (step + 1) / steps;
                const bool isNegative = function(low) < 0.0;
                if ((function(high) < 0.0) == isNegative) {
                    continue;
                }
                for (int k = 0; k < kBisections; ++k) {
                    const double middle = (low + high) / 2.0;
                    ((function(middle) < 0.0) == isNegative ? low : high) = middle;
                }
                stops.push_back(low);
            }
        }
        std::sort(stops.begin(), stops.end());
    }

    DRect& mBox;
    CCalcBoundingBox mGrow;
    double mHalfWidth;
    bool mStarted = false;
    bool mNeedsSearch = false;
};

double TurnBetween(tVector2D from, tVector2D to)
{
    return std::atan2(Cross(from, to), Dot(from, to));
}

/// Divides the pieces of a curve until the chords of the course, and of lines up to `reach` beside it, are flat.
class CFlattener {
public:
    CFlattener(double reach, tCourse& course) : mReach(reach), mCourse(course), mFirst(course.size()) {}

    void Add(const tBezierSegment& segment)
    {
        for (const tVector2D p : {segment.p0, segment.p1, segment.p2, segment.p3}) {
            if (!(std::fabs(p.x) <= kFarthest && std::fabs(p.y) <= kFarthest)) {
                return;
            }
        }
        const tVector2D chord = Difference(segment.p3, segment.p0);
        const tKnot start = {0.0, segment.p0, HeadingAt(segment, 0.0, chord)};
        const tKnot end = {1.0, segment.p3, HeadingAt(segment, 1.0, chord)};
        if (mCourse.size() == mFirst) {
            mCourse.push_back({start.point, start.heading, 0.0});
        }
        const bool isStraight = Cross(start.heading, chord) == 0.0 && Cross(end.heading, chord) == 0.0;
        Divide(segment, start, end, isStraight ? kLeastCourseDepth : 0);
    }

private:
    struct tKnot {
        double t;
        tVector2D point;
        tVector2D heading;
    };

    /// Direction of the curve, of length 1; that of `other` where the curve stands still.
    static tVector2D HeadingAt(const tBezierSegment& segment, double t, tVector2D other)
    {
        tVector2D along = UBezier::DerivativeAt(segment, t);
        if (Norm(along) == 0.0) {
            along = other;
        }
        const double length = std::hypot(along.x, along.y);
        return length > 0.0 ? tVector2D{along.x / length, along.y / length} : tVector2D{1.0, 0.0};
    }

    void Divide(const tBezierSegment& segment, const tKnot& from, const tKnot& to, int depth)
    {
        const double t = (from.t + to.t) / 2.0;
        const tKnot middle = {t, UBezier::PointAt(segment, t), HeadingAt(segment, t, from.heading)};
        const double turn =
            std::fabs(TurnBetween(from.heading, middle.heading)) + std::fabs(TurnBetween(middle.heading, to.heading));
        // An arc over chord c that turns by a, and one beside it at distance d, are (c + d a) a / 8 high.
        const double height = (Norm(Difference(to.point, from.point)) + mReach * turn) * turn / 8.0;
        const bool isCoarse = depth < kLeastCourseDepth || (height > UTrackCourse::kFlatness && depth < kDeepestCourse);
        if (isCoarse && HasRoom()) {
            Divide(segment, from, middle, depth + 1);
            Divide(segment, middle, to, depth + 1);
            return;
        }
        const double length = GaussLength(segment, from.t, to.t);
        if (depth == kDeepestCourse) {
            Append(from, middle, length / 2.0);
            Append(middle, to, length / 2.0);
        } else {
            Append(from, to, length);
        }
    }

    /// Appends the end of a chord, and before it what a turn too sharp for one chord needs.
    void Append(const tKnot& from, const tKnot& to, double length)
    {
        const double start = mCourse.back().length;
        const double turn = TurnBetween(from.heading, to.heading);
        const double step = std::max(UTrackCourse::WidestStep(mReach), kSmallestStep);
        const double needed = std::ceil(std::fabs(turn) / step);
        if (needed > 1.0 && HasRoom()) {
            for (double i = 1.0; i < needed; ++i) {
                const double share = i / needed;
                const double cosine = std::cos(turn * share);
                const double sine = std::sin(turn * share);
                mCourse.push_back(
                    {{from.point.x + (to.point.x - from.point.x) * share,
                      from.point.y + (to.point.y - from.point.y) * share},
                     {from.heading.x * cosine - from.heading.y * sine, from.heading.y * cosine + from.heading.x * sine},
                     start + length * share});
            }
        }
        mCourse.push_back({to.point, to.heading, start + length});
    }

    /// Whether pieces are still divided.
    bool HasRoom() const { return mCourse.size() - mFirst < UBezier::kMostCoursePoints - kMostPerPiece; }

    double mReach;
    tCourse& mCourse;
    size_t mFirst;
};
} // namespace

template <bool kFromBehind, typename tIterator>
double UBezier::EndAngle(tIterator at, tIterator stop)
{
    const auto nextDifferent = [stop](tIterator from) {
        return std::find_if(from, stop,
                            [from](const CPoint& point) { return point.x != from->x || point.y != from->y; });
    };
    const tIterator next = at != stop ? nextDifferent(at) : stop;
    if (next == stop) {
        return 0.0;
    }
    const CPoint& from = kFromBehind ? *next : *at;
    const CPoint& to = kFromBehind ? *at : *next;
    tVector2D tangent = {to.x - from.x, to.y - from.y};
    const tIterator third = nextDifferent(next);
    if (third != stop) {
        tangent = Mirrored(kFromBehind ? Tangent(*third, from, to) : Tangent(from, to, *third), from, to);
    }
    return std::atan2(tangent.y, tangent.x) * kDegreesPerRadian;
}

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
    if (Norm(tangent) <= 1e-12 * in2 * std::sqrt(out2)) {
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
    const double length = Norm(chord);
    const double fromLength = Norm(fromTangent);
    const double toLength = Norm(toTangent);
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

namespace {
double SegmentLength(const tBezierSegment& segment)
{
    return AdaptiveLength(segment, 0.0, 1.0, GaussLength(segment, 0.0, 1.0), kDeepestHalving);
}
} // namespace

double UBezier::Length(const std::vector<CPoint>& points)
{
    double length = 0.0;
    ForEachSegment(points, [&length](const tBezierSegment& segment) { length += SegmentLength(segment); });
    return length;
}

std::vector<double> UBezier::PointLengths(const std::vector<CPoint>& points)
{
    std::vector<double> lengths;
    lengths.reserve(points.size());
    double length = 0.0;
    const auto addRepeated = [&] {
        do {
            lengths.push_back(length);
        } while (lengths.size() < points.size() && points[lengths.size()].x == points[lengths.size() - 1].x &&
                 points[lengths.size()].y == points[lengths.size() - 1].y);
    };
    if (!points.empty()) {
        addRepeated();
    }
    ForEachSegment(points, [&](const tBezierSegment& segment) {
        length += SegmentLength(segment);
        addRepeated();
    });
    return lengths;
}

void UBezier::CalcEndAngles(const std::vector<CPoint>& points, double& start, double& end)
{
    start = EndAngle<false>(points.begin(), points.end());
    end = EndAngle<true>(points.rbegin(), points.rend());
}

void UBezier::CalcBox(const std::vector<CPoint>& points, const tTurn& turn, double halfWidth, DRect& box)
{
    COffsetBox offset(box, halfWidth);
    const auto placed = [&turn](const tBezierSegment& segment) {
        return tBezierSegment{turn.Apply(segment.p0), turn.Apply(segment.p1), turn.Apply(segment.p2),
                              turn.Apply(segment.p3)};
    };
    if (ForEachSegment(points, [&](const tBezierSegment& segment) { offset.Add(placed(segment)); }) == 0) {
        CCalcBoundingBox grow(box);
        for (const CPoint& point : points) {
            const tVector2D at = turn.Apply({point.x, point.y});
            grow.Update(at.x, at.y);
        }
    }
    if (offset.NeedsSearch()) {
        ForEachSegment(points, [&](const tBezierSegment& segment) { offset.Search(placed(segment)); });
    }
}

void UBezier::Flatten(const std::vector<CPoint>& points, const tTurn& turn, double reach, tCourse& course)
{
    CFlattener flattener(std::fabs(reach), course);
    ForEachSegment(points, [&](const tBezierSegment& segment) {
        flattener.Add({turn.Apply(segment.p0), turn.Apply(segment.p1), turn.Apply(segment.p2), turn.Apply(segment.p3)});
    });
}

void UBezier::Flatten(const std::vector<tBezierSegment>& segments, double reach, tCourse& course)
{
    CFlattener flattener(std::fabs(reach), course);
    for (const tBezierSegment& segment : segments) {
        flattener.Add(segment);
    }
}

#include "Utilities/Geometry/UTrackCourse.h"

#include "KVUNum/Angles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
/// How far from a tight bend the crossing of a line with itself is looked for, in distances of the line.
constexpr double kSearchReach = 12.0;
/// Pairs of chords tried in one line at the most: these, and so many for each of its points. A bend takes some
/// thousands; only a scribble takes more, and its line is then bridged instead of cut.
constexpr size_t kMostTests = 200000;
constexpr size_t kMostTestsPerPoint = 100;
/// A step that rounding has not yet made 0, in radians.
constexpr double kSmallestStep = 1e-7;
/// Cosine of the angle within which two chords go the same way.
constexpr double kSameWay = 0.9;
/// Points closer than this are one, mm: what remains of a line that has shrunk to the centre of its bend.
constexpr double kSamePoint = 1e-7;

double Dot(tVector2D a, tVector2D b)
{
    return a.x * b.x + a.y * b.y;
}

double Cross(tVector2D a, tVector2D b)
{
    return a.x * b.y - a.y * b.x;
}

tVector2D Difference(tVector2D a, tVector2D b)
{
    return {a.x - b.x, a.y - b.y};
}

double Distance(tVector2D a, tVector2D b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Puts the line beside a course together from the runs in which it follows the course's travel. What runs backwards
/// between two of them is left out.
class COffsetLine {
public:
    explicit COffsetLine(double distance) : mDistance(distance), mSearchLength(kSearchReach * std::fabs(distance)) {}

    void Follow(const tCourse& course)
    {
        mTestsLeft = kMostTests + kMostTestsPerPoint * course.size();
        tVector2D last = Beside(course.front());
        mLine.push_back(last);
        mRun.push_back(last);
        for (size_t i = 1; i < course.size(); ++i) {
            const tVector2D next = Beside(course[i]);
            if (Distance(last, next) <= kSamePoint) {
                continue;
            }
            const tVector2D heading = {course[i - 1].heading.x + course[i].heading.x,
                                       course[i - 1].heading.y + course[i].heading.y};
            const bool forwards = Dot(Difference(next, last), heading) >= 0.0;
            if (forwards) {
                if (mRun.empty()) {
                    mRun.push_back(last);
                }
                mRun.push_back(next);
            } else {
                JoinRun();
            }
            last = next;
        }
        JoinRun();
        if (Distance(mLine.back(), last) > kSamePoint) {
            mLine.push_back(last);
        }
    }

    const std::vector<tVector2D>& GetLine() const { return mLine; }

private:
    /// The two chords that cross, by their distance from the bend, and where.
    struct tCrossing {
        size_t behind;
        size_t ahead;
        tVector2D point;
    };

    tVector2D Beside(const tCoursePoint& at) const
    {
        return {at.point.x - mDistance * at.heading.y, at.point.y + mDistance * at.heading.x};
    }

    /// Appends the run to the line, cutting both where they cross. A bend in several steps may let them cross more than
    /// once, the nearest crossing being that of a step only; so what is left is tried again.
    void JoinRun()
    {
        size_t start = 0;
        bool isCut = false;
        tCrossing crossing = {};
        while (FindCrossing(start, isCut, crossing)) {
            mLine.resize(mLine.size() - 1 - crossing.behind);
            mLine.push_back(crossing.point);
            start += crossing.ahead;
            mRun[start] = crossing.point;
            isCut = true;
        }
        if (!isCut) {
            start = SkipStepBack();
        }
        const bool goesOn = isCut || (!mRun.empty() && Distance(mLine.back(), mRun[start]) <= kSamePoint);
        mLine.insert(mLine.end(), mRun.begin() + static_cast<std::ptrdiff_t>(start + (goesOn ? 1 : 0)), mRun.end());
        mRun.clear();
    }

    /// A bend hardly tighter than the distance makes a step back so small that the chords around it do not cross, or
    /// cross the other way round. @return where the run passes the end of the line in its direction
    size_t SkipStepBack() const
    {
        if (mLine.size() < 2 || mRun.size() < 2) {
            return 0;
        }
        const tVector2D tail = Difference(mLine.back(), Behind(1));
        const tVector2D head = Difference(mRun[1], mRun[0]);
        if (Dot(tail, head) < kSameWay * std::sqrt(Dot(tail, tail) * Dot(head, head))) {
            return 0;
        }
        size_t start = 0;
        while (start + 1 < mRun.size() && Dot(Difference(mRun[start], mLine.back()), tail) < 0.0) {
            ++start;
        }
        return start;
    }

    /// Looks for the crossing nearest to the bend between the line and the run from `start` on: one chord more on
    /// either side in each round, tried with all of the other side that is already near enough.
    /// @param isCut  the two were cut already and meet where they do: that is no crossing
    bool FindCrossing(size_t start, bool isCut, tCrossing& crossing)
    {
        if (mRun.size() <= start + 1) {
            return false;
        }
        const size_t last = mRun.size() - 1 - start;
        size_t behind = 0;
        size_t ahead = 0;
        double behindLength = 0.0;
        double aheadLength = 0.0;
        const auto crosses = [&](size_t i, size_t k) {
            return !(isCut && i == 0 && k == 0) && Crosses(i, start, k, crossing);
        };
        for (;;) {
            const bool growsBehind = behind + 1 < mLine.size() && behindLength <= mSearchLength;
            const bool growsAhead = ahead < last && aheadLength <= mSearchLength;
            if ((!growsBehind && !growsAhead) || mTestsLeft == 0) {
                return false;
            }
            if (growsBehind) {
                behindLength += Distance(Behind(behind), Behind(behind + 1));
                ++behind;
                for (size_t i = 0; i < ahead; ++i) {
                    if (crosses(behind - 1, i)) {
                        return true;
                    }
                }
            }
            if (growsAhead) {
                aheadLength += Distance(mRun[start + ahead], mRun[start + ahead + 1]);
                ++ahead;
                for (size_t i = 0; i < behind; ++i) {
                    if (crosses(i, ahead - 1)) {
                        return true;
                    }
                }
            }
        }
    }

    /// A point of the line, counted from its end.
    tVector2D Behind(size_t i) const { return mLine[mLine.size() - 1 - i]; }

    /// Whether a chord of the line, counted from its end, and one of the run cross the way a cut bend does: turning to
    /// the side on which the line lies.
    bool Crosses(size_t behind, size_t start, size_t ahead, tCrossing& crossing)
    {
        mTestsLeft -= mTestsLeft > 0 ? 1 : 0;
        const tVector2D from = Behind(behind + 1);
        const tVector2D at = mRun[start + ahead];
        const tVector2D u = Difference(Behind(behind), from);
        const tVector2D v = Difference(mRun[start + ahead + 1], at);
        const double turn = Cross(u, v);
        if (!(turn * mDistance > 0.0)) {
            return false;
        }
        const tVector2D between = Difference(at, from);
        const double s = Cross(between, v) / turn;
        const double t = Cross(between, u) / turn;
        if (!(s >= 0.0 && s <= 1.0 && t >= 0.0 && t <= 1.0)) {
            return false;
        }
        crossing = {behind, ahead, {from.x + s * u.x, from.y + s * u.y}};
        return true;
    }

    double mDistance;
    double mSearchLength;
    size_t mTestsLeft = 0;
    std::vector<tVector2D> mLine;
    std::vector<tVector2D> mRun;
};
} // namespace

double UTrackCourse::WidestStep(double radius)
{
    // A chord over angle a leaves its arc by radius × (1 - cos(a / 2)).
    return radius > kFlatness ? std::max(2.0 * std::acos(1.0 - kFlatness / radius), kSmallestStep) : kPi;
}

void UTrackCourse::AppendStraight(tVector2D from, tVector2D to, tCourse& course)
{
    const double length = Distance(from, to);
    if (!std::isfinite(length) || length == 0.0) {
        return;
    }
    const tVector2D heading = {(to.x - from.x) / length, (to.y - from.y) / length};
    const double start = course.empty() ? 0.0 : course.back().length;
    course.push_back({from, heading, start});
    course.push_back({to, heading, start + length});
}

void UTrackCourse::AppendChain(const std::vector<CPoint>& points, tCourse& course)
{
    for (size_t i = 1; i < points.size(); ++i) {
        AppendStraight({points[i - 1].x, points[i - 1].y}, {points[i].x, points[i].y}, course);
    }
}

tCoursePoint UTrackCourse::AtLength(const tCourse& course, double length)
{
    if (!(length > course.front().length)) {
        return course.front();
    }
    if (length >= course.back().length) {
        return course.back();
    }
    const auto after = std::upper_bound(course.begin(), course.end(), length,
                                        [](double value, const tCoursePoint& at) { return value < at.length; });
    const tCoursePoint& b = *after;
    const tCoursePoint& a = *(after - 1);
    // The cubic with both points and both headings.
    const double step = b.length - a.length;
    const double t = (length - a.length) / step;
    const double u = 1.0 - t;
    const double fromA = (1.0 + 2.0 * t) * u * u;
    const double fromB = (1.0 + 2.0 * u) * t * t;
    const double alongA = t * u * u * step;
    const double alongB = -u * t * t * step;
    tCoursePoint at;
    at.point = {fromA * a.point.x + fromB * b.point.x + alongA * a.heading.x + alongB * b.heading.x,
                fromA * a.point.y + fromB * b.point.y + alongA * a.heading.y + alongB * b.heading.y};
    const tVector2D mixed = {u * a.heading.x + t * b.heading.x, u * a.heading.y + t * b.heading.y};
    const double norm = std::hypot(mixed.x, mixed.y);
    at.heading = norm > 0.0 ? tVector2D{mixed.x / norm, mixed.y / norm} : a.heading;
    at.length = length;
    return at;
}

void UTrackCourse::CalcOffset(const tCourse& course, double distance, std::vector<CPoint>& line)
{
    if (course.empty() || !std::isfinite(distance)) {
        return;
    }
    COffsetLine offset(distance);
    offset.Follow(course);
    line.reserve(line.size() + offset.GetLine().size());
    for (const tVector2D point : offset.GetLine()) {
        line.emplace_back(point.x, point.y, 0.0);
    }
}

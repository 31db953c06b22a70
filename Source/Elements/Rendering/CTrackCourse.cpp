#include "Elements/Rendering/CTrackCourse.h"

#include "KVUNum/Angles.h"

#include <algorithm>
#include <cmath>

namespace {
tVector2D PointOnArc(const CTrackCourse::tArc& piece, double radius, double heading)
{
    const tDirection direction = UArcGeometry::Direction(heading);
    return {piece.centre.x + radius * direction.sine, piece.centre.y - radius * direction.cosine};
}

/// The normal to the right of travel, with y growing downwards.
tVector2D RightOf(tVector2D along)
{
    const double length = std::hypot(along.x, along.y);
    return length > 0.0 ? tVector2D{-along.y / length, along.x / length} : tVector2D{0.0, 0.0};
}

tVector2D Shifted(tVector2D point, tVector2D direction, double distance)
{
    return {point.x + direction.x * distance, point.y + direction.y * distance};
}

tVector2D SecondDerivativeAt(const tBezierSegment& s, double t)
{
    const double u = 1.0 - t;
    return {6.0 * (u * (s.p2.x - 2.0 * s.p1.x + s.p0.x) + t * (s.p3.x - 2.0 * s.p2.x + s.p1.x)),
            6.0 * (u * (s.p2.y - 2.0 * s.p1.y + s.p0.y) + t * (s.p3.y - 2.0 * s.p2.y + s.p1.y))};
}

/// What is left of the curve's speed on a line beside it; negative where the bend is tighter than the distance.
double SpeedBeside(tVector2D first, tVector2D second, double distance)
{
    const double speed = std::hypot(first.x, first.y);
    // To the right of a turn towards positive y lies its inside, with the smaller radius.
    return speed > 0.0 ? 1.0 - distance * (first.x * second.y - first.y * second.x) / (speed * speed * speed) : 1.0;
}

/// A point of the offset curve and its derivative.
struct tOffsetPoint {
    tVector2D at;
    tVector2D derivative;
};

tOffsetPoint OffsetAt(const tBezierSegment& segment, double t, double distance)
{
    const tVector2D first = UBezier::DerivativeAt(segment, t);
    const double factor = std::max(SpeedBeside(first, SecondDerivativeAt(segment, t), distance), 0.0);
    return {Shifted(UBezier::PointAt(segment, t), RightOf(first), distance), {first.x * factor, first.y * factor}};
}

/// Pieces into which a segment is cut for its offset curve: one for each 15° that its controls turn.
int CutsOf(const tBezierSegment& s)
{
    const auto turn = [](tVector2D a, tVector2D b) {
        return std::fabs(std::atan2(a.x * b.y - a.y * b.x, a.x * b.x + a.y * b.y)) * kDegreesPerRadian;
    };
    const tVector2D a = {s.p1.x - s.p0.x, s.p1.y - s.p0.y};
    const tVector2D b = {s.p2.x - s.p1.x, s.p2.y - s.p1.y};
    const tVector2D c = {s.p3.x - s.p2.x, s.p3.y - s.p2.y};
    const double sum = turn(a, b) + turn(b, c);
    return sum < 0.5 ? 1 : 2 + static_cast<int>(sum / 15.0);
}

void AddOffset(const tBezierSegment& segment, double distance, CDrawing& drawing, bool first)
{
    if (distance == 0.0) {
        if (first) {
            drawing.MoveTo(segment.p0.x, segment.p0.y);
        }
        drawing.CurveTo(segment.p1.x, segment.p1.y, segment.p2.x, segment.p2.y, segment.p3.x, segment.p3.y);
        return;
    }
    const int cuts = CutsOf(segment);
    tOffsetPoint from = OffsetAt(segment, 0.0, distance);
    if (first) {
        drawing.MoveTo(from.at.x, from.at.y);
    }
    for (int i = 1; i <= cuts; ++i) {
        const tOffsetPoint to = OffsetAt(segment, static_cast<double>(i) / cuts, distance);
        const double handle = 1.0 / (3.0 * cuts);
        drawing.CurveTo(from.at.x + from.derivative.x * handle, from.at.y + from.derivative.y * handle,
                        to.at.x - to.derivative.x * handle, to.at.y - to.derivative.y * handle, to.at.x, to.at.y);
        from = to;
    }
}

/// Whether the curve has a bend that the line beside it cannot follow.
bool IsTight(const tBezierSegment& segment, double distance)
{
    constexpr int kProbes = 16;
    for (int i = 0; i <= kProbes; ++i) {
        const double t = static_cast<double>(i) / kProbes;
        if (SpeedBeside(UBezier::DerivativeAt(segment, t), SecondDerivativeAt(segment, t), distance) < 0.1) {
            return true;
        }
    }
    return false;
}

/// A line across the course.
void AddAcross(CDrawing& drawing, tVector2D point, tVector2D along, double reach)
{
    const tVector2D right = RightOf(along);
    drawing.MoveTo(point.x - right.x * reach, point.y - right.y * reach);
    drawing.LineTo(point.x + right.x * reach, point.y + right.y * reach);
}
} // namespace

void CTrackCourse::AddLine(tVector2D from, tVector2D to)
{
    mPieces.emplace_back(tLine{from, to});
    mLength += std::hypot(to.x - from.x, to.y - from.y);
}

void CTrackCourse::AddArc(tVector2D start, const tTravelledArc& arc)
{
    const tDirection heading = UArcGeometry::Direction(arc.start);
    const tVector2D centre = {start.x - arc.radius * heading.sine, start.y + arc.radius * heading.cosine};
    const double sweep = std::clamp(arc.sweep, -360.0, 360.0);
    mPieces.emplace_back(tArc{centre, {arc.radius, arc.start, sweep}});
    mLength += std::fabs(arc.radius * sweep) / kDegreesPerRadian;
}

void CTrackCourse::AddCurve(const tBezierSegment& segment)
{
    mPieces.emplace_back(segment);
    // Simpson's rule over the speed; drawing needs no more.
    constexpr int kSteps = 8;
    double sum = 0.0;
    for (int i = 0; i <= kSteps; ++i) {
        const tVector2D speed = UBezier::DerivativeAt(segment, static_cast<double>(i) / kSteps);
        sum += std::hypot(speed.x, speed.y) * (i == 0 || i == kSteps ? 1.0 : i % 2 == 1 ? 4.0 : 2.0);
    }
    mLength += sum / (3.0 * kSteps);
}

CTrackCourse CTrackCourse::Thinned(double spacing, size_t stride) const
{
    CTrackCourse course;
    size_t passed = 0;
    tVector2D from = IsEmpty() ? tVector2D{} : GetStart();
    for (size_t i = 0; i < mPieces.size(); ++i) {
        const auto* segment = std::get_if<tBezierSegment>(&mPieces[i]);
        if (segment == nullptr) { // straights and arcs are courses of one piece
            return *this;
        }
        const tVector2D to = segment->p3;
        const tVector2D way = {to.x - from.x, to.y - from.y};
        ++passed;
        const bool isKept = passed >= stride && std::hypot(way.x, way.y) >= spacing;
        if (!isKept && i + 1 < mPieces.size()) {
            continue;
        }
        if (stride > 1) {
            course.AddLine(from, to);
        } else if (passed == 1) {
            course.AddCurve(*segment);
        } else {
            course.AddCurve({from, Shifted(from, way, 1.0 / 3.0), Shifted(from, way, 2.0 / 3.0), to});
        }
        from = to;
        passed = 0;
    }
    return course;
}

bool CTrackCourse::AddCutTo(CDrawing& drawing, double distance) const
{
    const auto isTight = [distance](const tPiece& piece) {
        const auto* segment = std::get_if<tBezierSegment>(&piece);
        return segment != nullptr && IsTight(*segment, distance);
    };
    if (distance == 0.0 || std::none_of(mPieces.begin(), mPieces.end(), isTight)) {
        return false;
    }
    std::vector<tBezierSegment> segments;
    for (const tPiece& piece : mPieces) {
        if (const auto* segment = std::get_if<tBezierSegment>(&piece)) {
            segments.push_back(*segment);
        }
    }
    tCourse course;
    UBezier::Flatten(segments, distance, course);
    std::vector<CPoint> line;
    UTrackCourse::CalcOffset(course, distance, line);
    for (size_t i = 0; i < line.size(); ++i) {
        if (i == 0) {
            drawing.MoveTo(line[i].x, line[i].y);
        } else {
            drawing.LineTo(line[i].x, line[i].y);
        }
    }
    return true;
}

void CTrackCourse::AddTo(CDrawing& drawing, double distance) const
{
    if (AddCutTo(drawing, distance)) {
        return;
    }
    bool first = true;
    for (const tPiece& piece : mPieces) {
        if (const auto* line = std::get_if<tLine>(&piece)) {
            const tVector2D right = RightOf({line->to.x - line->from.x, line->to.y - line->from.y});
            const tVector2D from = Shifted(line->from, right, distance);
            const tVector2D to = Shifted(line->to, right, distance);
            if (first) {
                drawing.MoveTo(from.x, from.y);
            }
            drawing.LineTo(to.x, to.y);
        } else if (const auto* arc = std::get_if<tArc>(&piece)) {
            const double radius = arc->arc.radius - distance;
            if (radius * arc->arc.radius <= 0.0) {
                continue; // beyond the centre
            }
            const tVector2D start = PointOnArc(*arc, radius, arc->arc.start);
            drawing.MoveTo(start.x, start.y);
            // Heading 0 is a quarter turn ahead of the direction from the centre, or behind it for a negative radius.
            const double direction = arc->arc.start + (radius > 0.0 ? -90.0 : 90.0);
            drawing.ArcTo(arc->centre.x, arc->centre.y, std::fabs(radius), direction, arc->arc.sweep);
        } else if (const auto* segment = std::get_if<tBezierSegment>(&piece)) {
            AddOffset(*segment, distance, drawing, first);
        }
        first = false;
    }
}

tVector2D CTrackCourse::GetPoint(const tPiece& piece, bool end)
{
    if (const auto* line = std::get_if<tLine>(&piece)) {
        return end ? line->to : line->from;
    }
    if (const auto* arc = std::get_if<tArc>(&piece)) {
        return PointOnArc(*arc, arc->arc.radius, arc->arc.start + (end ? arc->arc.sweep : 0.0));
    }
    const auto& segment = std::get<tBezierSegment>(piece);
    return end ? segment.p3 : segment.p0;
}

tVector2D CTrackCourse::GetDirection(const tPiece& piece, bool end)
{
    if (const auto* line = std::get_if<tLine>(&piece)) {
        return {line->to.x - line->from.x, line->to.y - line->from.y};
    }
    if (const auto* arc = std::get_if<tArc>(&piece)) {
        const tDirection heading = UArcGeometry::Direction(arc->arc.start + (end ? arc->arc.sweep : 0.0));
        return {heading.cosine, heading.sine};
    }
    return UBezier::DerivativeAt(std::get<tBezierSegment>(piece), end ? 1.0 : 0.0);
}

void CTrackCourse::AddEndsTo(CDrawing& drawing, double reach) const
{
    if (!IsEmpty()) {
        AddAcross(drawing, GetStart(), GetDirection(mPieces.front(), false), reach);
        AddAcross(drawing, GetEnd(), GetDirection(mPieces.back(), true), reach);
    }
}

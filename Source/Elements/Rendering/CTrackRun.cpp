#include "Elements/Rendering/CTrackRun.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "UnitLength/URailConstants.h"

#include <algorithm>
#include <cmath>

namespace {
// Of a real track of 1,435 mm gauge: sleepers of 2.6 × 0.26 m every 0.62 m.
constexpr double kSleeperLength = 1.8; ///< gauges
constexpr double kSleeperWidth = 0.18;
constexpr double kSleeperPitch = 0.43;
/// Where a track does not tell the width of its bed.
constexpr double kBedWidth = 2.3; ///< gauges
/// Around a selected track, on either side.
constexpr double kSelectionSeam = 0.2; ///< beds
/// Sleepers stay this far inside the bed.
constexpr double kSleeperInset = 0.92;

// Below these, device units, a part would be a blur.
constexpr double kFinestPitch = 2.2;
constexpr double kFinestGauge = 2.6;
constexpr double kThinnestRail = 0.7;
constexpr double kThinnestTrack = 1.1;
constexpr double kFinestMidRail = 6.0; ///< gauge from which on there is room for one

/// Gauges and beds wider than this are none, mm.
constexpr double kMostWidth = 1000.0;
/// Tracks of an element whose sleepers others take over; a turnout has four.
constexpr size_t kMostRoutes = 16;
/// Joints closer than this are the same, mm.
constexpr double kSamePlace = 0.5;

bool AreSame(const tPen& one, const tPen& other)
{
    return one.width == other.width && one.dash == other.dash && one.dashOffset == other.dashOffset &&
           one.paint.red == other.paint.red && one.paint.green == other.paint.green &&
           one.paint.blue == other.paint.blue && one.paint.alpha == other.paint.alpha;
}

bool IsClose(tVector2D one, tVector2D other)
{
    return std::hypot(one.x - other.x, one.y - other.y) < kSamePlace;
}

/// The colour of an element that has been given one: black is what all begin with.
CColor BedColorOf(const CDrawingOptions& options, const tPalette& palette)
{
    const CColor& first = options.GetFirstColor();
    if (!options.GetFill()) {
        return palette.board.A() > 0.0 ? palette.board : palette.paper;
    }
    return first.R() > 0.0 || first.G() > 0.0 || first.B() > 0.0 ? first : CDrawingOptions().GetFirstColor();
}

double UsableOr(double value, double substitute)
{
    return value > 0.0 && value <= kMostWidth ? value : substitute; // false for what is no number
}
} // namespace

void CTrackRun::CStroker::Use(const tPen& pen, const tTrack& track)
{
    const double segments = static_cast<double>(track.course.GetNumberOfPieces()) +
                            (pen.dash.empty() ? 0.0 : track.course.GetLength() / track.pitch) +
                            track.course.GetLength() / (kPixelsPerSegment * mContext.pixel);
    if (mSegments + segments > kMostSegments || (mSegments > 0.0 && !AreSame(pen, mPen))) {
        Flush();
    }
    mPen = pen;
    mSegments += segments;
}

void CTrackRun::CStroker::Flush()
{
    if (mSegments > 0.0) {
        mContext.drawing.Stroke(mPen);
        mSegments = 0.0;
    }
}

void CTrackRun::Add(CCompositeGeometry& element, CBasicGeometry& component, CTrackCourse course,
                    const CDrawingOptions& options, bool isFirst, int economy)
{
    if (course.IsEmpty()) {
        return;
    }
    const auto [gauge, bed] = WidthsOf(element, component);
    const double railWidth = std::min(UsableOr(component.GetRailWidth(), gauge * 0.05), gauge / 4.0);
    tTrack track = {
        std::move(course),    options, bed, gauge, railWidth, component.GetMidRailFlag() != 0, 0.0, 0.0, !isFirst,
        economy < kNoSleepers};
    if (economy > 0) {
        track.course = track.course.Thinned(mContext.pixel / 2.0, StrideOf(economy));
    }
    if (economy >= kOneLine) {
        mLines.push_back(std::move(track));
        return;
    }
    if (isFirst) {
        mElementStart = mTracks.size();
    }
    SpaceSleepers(track, gauge * kSleeperPitch, isFirst);
    mTracks.push_back(std::move(track));
}

CTrackRun::tWidths CTrackRun::WidthsOf(const CCompositeGeometry& element, CBasicGeometry& component)
{
    const double bed = UsableOr(component.GetTrackbedWidth(), 0.0);
    double gauge = UsableOr(component.GetGauge(), 0.0);
    if (gauge == 0.0 || (bed > 0.0 && gauge > bed)) { // a flexible track need not have one
        const double usual = URailConstants::GetModelScaleTW(element.GetModelScale());
        gauge = usual > 1.0 && (bed == 0.0 || usual < bed) ? usual : bed > 0.0 ? bed / kBedWidth : 0.0;
    }
    if (gauge == 0.0) {
        gauge = URailConstants::GetModelScaleTW(URailConstants::kScaleDefault);
    }
    return {gauge, bed > 0.0 ? bed : gauge * kBedWidth};
}

double CTrackRun::GetReach(const CCompositeGeometry& element, CBasicGeometry& component)
{
    const double drawn = WidthsOf(element, component).bed * (0.5 + (element.IsSelected() ? kSelectionSeam : 0.0));
    return std::max(drawn - std::max(component.CalcTrackMarkerWidth(), 0.0), 0.0);
}

/// Sleepers stand in the middles of equal parts of the course. Where a route parts from one of the same element, it
/// takes over that one's sleepers: two patterns at slightly different distances would make a blot.
void CTrackRun::SpaceSleepers(tTrack& track, double natural, bool isFirst) const
{
    const double length = track.course.GetLength();
    const double sleeper = track.gauge * kSleeperWidth;
    track.pitch = length / std::max(std::round(length / natural), 1.0);
    track.dashOffset = (track.pitch + sleeper) / 2.0;
    const size_t end = std::min(mTracks.size(), mElementStart + kMostRoutes);
    for (size_t i = mElementStart; !isFirst && i < end; ++i) {
        const tTrack& other = mTracks[i];
        if (IsClose(track.course.GetStart(), other.course.GetStart()) ||
            IsClose(track.course.GetStart(), other.course.GetEnd())) {
            track.pitch = other.pitch;
            track.dashOffset = (track.pitch + sleeper) / 2.0;
            return;
        }
        if (IsClose(track.course.GetEnd(), other.course.GetStart()) ||
            IsClose(track.course.GetEnd(), other.course.GetEnd())) {
            // The same pattern, counted from the end: where its first sleeper then begins, seen from the start.
            track.pitch = other.pitch;
            const double first = std::fmod(length + track.pitch / 2.0, track.pitch) - sleeper / 2.0;
            track.dashOffset = first > 0.0 ? track.pitch - first : -first;
            return;
        }
    }
}

double CTrackRun::RailWidth(const tTrack& track) const
{
    // In a picture that is enlarged, rails as thick as on a screen would be clumsy.
    return std::max(track.railWidth, kThinnestRail * (mContext.pixel + mContext.detail) / 2.0);
}

bool CTrackRun::HasBed() const
{
    return mContext.style != eTrackStyle::kCentreLine;
}

void CTrackRun::Draw()
{
    DrawSelection();
    if (HasBed()) {
        DrawBeds();
    }
    switch (mContext.style) {
    case eTrackStyle::kCentreLine:
        DrawCentreLines();
        DrawEnds();
        break;
    case eTrackStyle::kFilledBed:
        DrawEnds();
        break;
    case eTrackStyle::kPlan:
        DrawRails();
        DrawEnds();
        break;
    case eTrackStyle::kSleepers:
        DrawSleepers();
        DrawRails();
        break;
    case eTrackStyle::kRailsOnBed:
        DrawRails();
        break;
    }
    DrawLines();
    mTracks.clear();
    mLines.clear();
    mElementStart = 0;
}

void CTrackRun::DrawSelection()
{
    CStroker stroker(mContext);
    for (const tTrack& track : mTracks) {
        if (track.options.IsSelected()) {
            const double seam = std::max(track.bedWidth * kSelectionSeam, 3.0 * mContext.pixel);
            stroker.Use({PaintOf(track.options.GetThirdColor()), track.bedWidth + 2.0 * seam}, track);
            track.course.AddTo(mContext.drawing, 0.0);
        }
    }
}

void CTrackRun::DrawBeds()
{
    const bool isFilledStyle = mContext.style == eTrackStyle::kFilledBed;
    // The edge is what is left to see of a wider band below.
    for (const bool isEdge : {true, false}) {
        CStroker stroker(mContext);
        for (const tTrack& track : mTracks) {
            CColor color = isEdge ? mContext.palette.bedEdge : mContext.palette.bed;
            if (isFilledStyle) {
                const CColor fill = BedColorOf(track.options, mContext.palette);
                color = isEdge ? Mix(fill, track.options.GetSecondColor(), 0.45) : fill;
            }
            const double edge = std::max(track.bedWidth * 0.025, 0.4 * mContext.pixel);
            const double width = std::max(track.bedWidth, kThinnestTrack * mContext.pixel);
            stroker.Use({PaintOf(color), isEdge ? width + edge : width - edge}, track);
            track.course.AddTo(mContext.drawing, 0.0);
        }
    }
}

void CTrackRun::DrawSleepers()
{
    CStroker stroker(mContext);
    for (const tTrack& track : mTracks) {
        if (!track.hasSleepers || track.pitch < kFinestPitch * mContext.detail) {
            continue;
        }
        const double length = std::min(track.gauge * kSleeperLength, track.bedWidth * kSleeperInset);
        const double sleeper = std::min(track.gauge * kSleeperWidth, track.pitch / 2.0);
        if (track.isBranch) { // a bed of its own hides the sleepers that it crosses
            stroker.Use({PaintOf(mContext.palette.bed), length}, track);
            track.course.AddTo(mContext.drawing, 0.0);
        }
        tPen pen = {PaintOf(mContext.palette.sleeper), length};
        pen.dash = {sleeper, track.pitch - sleeper};
        pen.dashOffset = track.dashOffset;
        stroker.Use(pen, track);
        track.course.AddTo(mContext.drawing, 0.0);
    }
}

void CTrackRun::DrawRails()
{
    const CColor& steel = mContext.style == eTrackStyle::kPlan ? mContext.palette.track : mContext.palette.rail;
    CStroker stroker(mContext);
    for (const tTrack& track : mTracks) {
        if (track.gauge < kFinestGauge * mContext.detail) { // both rails would be one blur
            const double width = std::max(track.gauge * 0.5, kThinnestTrack * mContext.pixel);
            stroker.Use({PaintOf(mContext.palette.track), width}, track);
            track.course.AddTo(mContext.drawing, 0.0);
            continue;
        }
        if (track.hasMidRail && track.gauge >= kFinestMidRail * mContext.detail) {
            stroker.Use({PaintOf(Mix(steel, mContext.palette.bed, 0.45)), RailWidth(track) * 0.6}, track);
            track.course.AddTo(mContext.drawing, 0.0);
        }
    }
    for (const tTrack& track : mTracks) {
        if (track.gauge >= kFinestGauge * mContext.detail) {
            stroker.Use({PaintOf(Mix(steel, track.options.GetSecondColor(), 0.15)), RailWidth(track)}, track);
            track.course.AddTo(mContext.drawing, track.gauge / 2.0);
            track.course.AddTo(mContext.drawing, -track.gauge / 2.0);
        }
    }
}

void CTrackRun::DrawCentreLines()
{
    CStroker stroker(mContext);
    for (const tTrack& track : mTracks) {
        const double width = std::max(track.gauge * 0.12, kThinnestTrack * mContext.pixel);
        stroker.Use({PaintOf(track.options.GetSecondColor()), width}, track);
        track.course.AddTo(mContext.drawing, 0.0);
    }
}

void CTrackRun::DrawEnds()
{
    CStroker stroker(mContext);
    for (const tTrack& track : mTracks) {
        if (track.bedWidth < 4.0 * mContext.pixel) {
            continue;
        }
        stroker.Use({PaintOf(track.options.GetSecondColor()), 0.6 * mContext.pixel}, track);
        track.course.AddEndsTo(mContext.drawing, track.bedWidth / 2.0);
    }
}

void CTrackRun::DrawLines()
{
    CStroker stroker(mContext);
    for (const tTrack& track : mLines) {
        tPen pen = {PaintOf(mContext.palette.track), kThinnestTrack * mContext.pixel};
        pen.join = Platform::eLineJoin::kBevel;
        pen.isCoarse = true;
        stroker.Use(pen, track);
        track.course.AddTo(mContext.drawing, 0.0);
    }
}

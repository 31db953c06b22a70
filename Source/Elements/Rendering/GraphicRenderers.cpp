#include "Elements/Rendering/GraphicRenderers.h"

#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Drawing/UTextMeasurer.h"

#include <algorithm>
#include <cmath>

namespace {
/// Thinnest line, in device units.
constexpr double kThinnestLine = 0.5;
/// How much of the pen's colour is in the outline of a filled area.
constexpr double kOutlineDarkness = 0.35;
/// Seam of a selected element, in device units.
constexpr double kSelectionSeam = 2.0;
/// Texts smaller than this many device units are left out: nobody could read them.
constexpr double kSmallestText = 3.5;
/// Lines are at most this thick, mm.
constexpr double kThickestLine = 1000.0;

/// A component's own colour; black stands for none.
CColor FillColorOf(CBasicGeometry& component, const CDrawingOptions& options)
{
    RGBColor own = {};
    component.GetFixedColor(own);
    if (own.red == 0 && own.green == 0 && own.blue == 0) {
        return options.GetFirstColor();
    }
    CColor color;
    color.SetFromRGBColorValues(own.red, own.green, own.blue);
    return color;
}

double ThicknessOf(CBasicGeometry& component)
{
    return std::clamp<double>(component.GetLineThickness(), 0.0, kThickestLine);
}

/// By how much a line sticks out of its course. In plans all lines are some pixels thick at the most.
double ReachOf(CBasicGeometry& component, eTrackStyle style)
{
    return style == eTrackStyle::kPlan ? 0.0 : ThicknessOf(component) / 2.0;
}

/// Paints the area or line on the drawing's path.
void Paint(CBasicGeometry& component, bool isClosed, const CDrawingOptions& options, const tRenderContext& context,
           int economy)
{
    const bool isPlan = context.style == eTrackStyle::kPlan;
    const bool isFilled = isClosed && options.GetFill() && !isPlan;
    const CColor fill = FillColorOf(component, options);
    // A line that is not to be filled has lost its colour.
    CColor line = isFilled                                    ? Mix(fill, options.GetSecondColor(), kOutlineDarkness)
                  : !isClosed && options.GetFill() && !isPlan ? fill
                                                              : options.GetSecondColor();
    double width = std::max(ThicknessOf(component), kThinnestLine * context.pixel);
    if (isPlan) {
        width = std::min(width, 1.5 * context.pixel);
    }
    if (options.IsSelected()) {
        line = options.GetThirdColor();
        width = std::max(width, kSelectionSeam * context.pixel);
    }
    const bool isSparse = economy >= kOneLine;
    if (isFilled && !isSparse) {
        const bool hasOutline = economy == 0;
        context.drawing.Fill(PaintOf(fill), hasOutline);
        if (!hasOutline) {
            return;
        }
    }
    context.drawing.Stroke({PaintOf(line),
                            isSparse ? kThinnestLine * context.pixel : width,
                            Platform::eLineCap::kButt,
                            isSparse ? Platform::eLineJoin::kBevel : Platform::eLineJoin::kRound,
                            {},
                            0.0,
                            isSparse});
}
} // namespace

double CPolyRenderer::GetReach(CBasicGeometry& component, eTrackStyle style) const
{
    return ReachOf(component, style);
}

double COvalRenderer::GetReach(CBasicGeometry& component, eTrackStyle style) const
{
    return ReachOf(component, style);
}

void CPolyRenderer::Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
                         const tRenderContext& context, int economy) const
{
    auto& polygon = static_cast<CPolyBIG&>(component);
    const tTurn placing = polygon.Placing(place.angle);
    bool first = true;
    const std::vector<CPoint>& points = polygon.GetPoints();
    for (size_t i = 0; i < points.size(); i += StrideOf(economy)) {
        const tVector2D placed = placing.Apply({points[i].x, points[i].y});
        const double x = place.position.x + placed.x;
        const double y = place.position.y + placed.y;
        if (!std::isfinite(x) || !std::isfinite(y)) {
            continue;
        }
        if (first) {
            context.drawing.MoveTo(x, y);
            first = false;
        } else {
            context.drawing.LineTo(x, y);
        }
    }
    if (first) {
        return;
    }
    if (polygon.GetPolyCloseFlag()) {
        context.drawing.ClosePath();
    }
    Paint(component, polygon.GetPolyCloseFlag(), options, context, economy);
}

void COvalRenderer::Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
                         const tRenderContext& context, int economy) const
{
    auto& oval = static_cast<COvalBIG&>(component);
    const CPoint& centre = oval.GetRotationReferencePoint(place.angle);
    const double radius = std::fabs(oval.GetRadX());
    const double x = place.position.x + centre.x;
    const double y = place.position.y + centre.y;
    if (!std::isfinite(x) || !std::isfinite(y) || !(radius <= kMostRadius)) {
        return;
    }
    context.drawing.MoveTo(x + radius, y);
    context.drawing.ArcTo(x, y, radius, 0.0, 360.0);
    context.drawing.ClosePath();
    Paint(component, true, options, context, economy);
}

void CTextRenderer::Draw(CBasicGeometry& component, const tPlacement& place, const CDrawingOptions& options,
                         const tRenderContext& context, int economy) const
{
    auto& text = static_cast<CTextBIG&>(component);
    const double size = text.GetTextSize() > 0 ? text.GetTextSize() : UTextMeasurer::kDefaultSize;
    const double x = place.position.x + text.GetItemXOffset();
    const double y = place.position.y + text.GetItemYOffset();
    const double angle = text.GetAngle() + place.angle;
    std::string characters;
    if (economy > 0 || size < kSmallestText * context.detail || !std::isfinite(x) || !std::isfinite(y) ||
        !std::isfinite(angle) || !UTextMeasurer::GetCharacters(text.GetTextReference(), characters)) {
        return;
    }
    const CColor color = options.IsSelected()                                        ? options.GetThirdColor()
                         : context.style == eTrackStyle::kPlan || !options.GetFill() ? options.GetSecondColor()
                                                                                     : FillColorOf(component, options);
    context.drawing.Save();
    context.drawing.Shift(x, y);
    context.drawing.Turn(std::fmod(angle, 360.0));
    context.drawing.DrawText(characters, 0.0, 0.0, {text.GetFontName(), size, PaintOf(color), 0.0, {}});
    context.drawing.Restore();
}

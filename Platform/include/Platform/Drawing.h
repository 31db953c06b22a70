// What pictures are drawn on. Nothing is loaded before the first picture is begun.
#pragma once

#include "Platform/Export.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Platform {
/// Platform includes nothing above it, so it has this one of its own.
inline constexpr double kRadiansPerDegree = 0.017453292519943295;

/// Components from 0 to 1.
struct tPaint {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
};

enum class eLineCap { kButt, kRound, kSquare };
enum class eLineJoin { kMiter, kRound, kBevel };

/// How a path is stroked. Lengths are in the units of the transform at hand.
struct tPen {
    tPaint paint;
    double width = 1; ///< above 0
    eLineCap cap = eLineCap::kButt;
    eLineJoin join = eLineJoin::kMiter;
    std::vector<double> dash = {}; ///< lengths of dash and gap by turns, each above 0; empty for a whole line
    double dashOffset = 0;         ///< where in the dash a line begins
};

/// How a text is set.
struct tTextLook {
    std::string font; ///< name as in MeasureText; the system font serves where it is not installed
    double size = 12; ///< of the font, in units of the transform at hand; above 0
    tPaint paint;
    double halo = 0; ///< width of the seam around the letters, 0 for none
    tPaint haloPaint;
};

/// A surface that takes lines, areas and texts, with one path and one transform at a time. x grows to the right, y
/// downwards, angles in degrees from positive x towards positive y. Every number handed over must be finite; within
/// 1e6 device units of the picture they are drawn exactly.
class PLATFORM_EXPORT CDrawing {
public:
    virtual ~CDrawing() = default;

    /// Begins a further piece of the path.
    virtual void MoveTo(double x, double y) = 0;
    virtual void LineTo(double x, double y) = 0;
    /// A cubic Bezier from the current point to (x, y).
    virtual void CurveTo(double x1, double y1, double x2, double y2, double x, double y) = 0;
    /// A circular arc, joined to the current point by a line: move to its start first for an arc alone.
    /// @param radius  0 or more
    /// @param start   direction of the first point as seen from the centre; the arc runs on by `sweep`, -360 to 360
    virtual void ArcTo(double centreX, double centreY, double radius, double start, double sweep) = 0;
    virtual void ClosePath() = 0;

    /// Fills what the path encloses (non-zero winding) and forgets the path, unless it is to be kept for a stroke.
    virtual void Fill(const tPaint& paint, bool keepPath) = 0;
    /// Strokes the path and forgets it.
    virtual void Stroke(const tPen& pen) = 0;
    /// Until the next Restore draws only inside the path; forgets the path.
    virtual void Clip() = 0;

    /// Keeps transform and clip; pairs nest.
    virtual void Save() = 0;
    virtual void Restore() = 0;
    /// Shift, Turn about the origin, and Scale (factor above 0) act on everything that follows, the latest first.
    virtual void Shift(double x, double y) = 0;
    virtual void Turn(double angle) = 0;
    virtual void Scale(double factor) = 0;

    /// Draws a text with the left top corner of its box at (x, y). Line breaks start new lines, control characters
    /// count as spaces, malformed bytes as question marks.
    virtual void DrawText(const std::string& text, double x, double y, const tTextLook& look) = 0;
    /// Size of that box, without the halo; zeros where no font can be had.
    virtual void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) = 0;
};

enum class ePictureFormat : uint8_t { kPNG = 1, kSVG = 2, kPDF = 3 };

/// A picture in memory; transparent where nothing is drawn.
class PLATFORM_EXPORT CPicture : public CDrawing {
public:
    /// Ends the picture; nothing can be drawn on it then.
    /// @param bytes  set to the file's content: the same bytes for the same drawing in a fresh process
    /// @return false when something went wrong on the way (memory ran out); bytes is then empty
    virtual bool Finish(std::string& bytes) = 0;
};

/// Begins a picture of so many pixels; in SVG and PDF one pixel is one unit.
/// @return null for a size that is not positive or beyond the limits, and where the drawing library cannot be had
PLATFORM_EXPORT std::unique_ptr<CPicture> BeginPicture(ePictureFormat format, int width, int height);
} // namespace Platform

// The centre line of a track, and what runs beside it.
#pragma once

#include "Utilities/Geometry/UArcGeometry.h"
#include "Utilities/Geometry/UBezier.h"
#include "Utilities/Geometry/UTrackCourse.h"

#include "Drawing/CDrawing.h"

#include <boost/container/small_vector.hpp>

#include <variant>

/// A connected course of lines, arcs and Bezier pieces in layout coordinates, mm. Copied by value.
class CTrackCourse {
public:
    struct tLine {
        tVector2D from;
        tVector2D to;
    };
    struct tArc {
        tVector2D centre;
        tTravelledArc arc; ///< at most a full turn
    };

    void AddLine(tVector2D from, tVector2D to);
    /// An arc that starts at a point. Sweeps beyond a full turn are cut to it.
    void AddArc(tVector2D start, const tTravelledArc& arc);
    void AddCurve(const tBezierSegment& segment);

    bool IsEmpty() const { return mPieces.empty(); }
    /// mm; of Bezier pieces to about 1e-4.
    double GetLength() const { return mLength; }
    /// Only of a course that is not empty.
    tVector2D GetStart() const { return GetPoint(mPieces.front(), false); }
    tVector2D GetEnd() const { return GetPoint(mPieces.back(), true); }

    /// The course with straight pieces in place of curves that end closer than `spacing` (mm) to the point before, and
    /// with every `stride`th point alone. Its start and its end stay.
    CTrackCourse Thinned(double spacing, size_t stride) const;

    size_t GetNumberOfPieces() const { return mPieces.size(); }

    /// Adds the line at a distance from the course to the drawing's path: to the right of travel, seen with y growing
    /// downwards, where the distance is positive. Straights and arcs stay what they are, a curve becomes Bezier pieces
    /// within 0.02 mm. A curve with a bend tighter than the distance becomes a chain that is cut
    /// where it would cross itself.
    void AddTo(CDrawing& drawing, double distance) const;
    /// Adds the lines across both ends, from -reach to reach.
    void AddEndsTo(CDrawing& drawing, double reach) const;

private:
    using tPiece = std::variant<tLine, tArc, tBezierSegment>;

    /// Adds the line beside a curve that bends too tightly for it.
    /// @return false where it bends gently: nothing is added
    bool AddCutTo(CDrawing& drawing, double distance) const;
    static tVector2D GetPoint(const tPiece& piece, bool end);
    /// Direction of travel there, of any length.
    static tVector2D GetDirection(const tPiece& piece, bool end);

    boost::container::small_vector<tPiece, 1> mPieces;
    double mLength = 0.0;
};

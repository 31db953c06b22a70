// Arithmetic of arcs and directions; the one home of the formulas.
#pragma once

#include "CRect/DRect.h"

/// Cosine and sine of an angle.
struct tDirection {
    double cosine;
    double sine;
};

/// An arc that is travelled: it starts with heading `start` and turns by `sweep` to the left (towards positive y from
/// positive x), both in degrees. A point of it with heading h lies at centre + radius × (sin h, -cos h).
struct tTravelledArc {
    double radius; ///< mm; has the sign of the sweep
    double start;
    double sweep;
};

class UArcGeometry {
public:
    UArcGeometry() = delete;

    /// Cosine and sine of an angle in degrees. The last values are remembered: a layout uses few angles. Exact at 0°.
    /// One thread only.
    static tDirection Direction(double degrees);

    /// The box of the band between the arcs of radius - halfWidth and radius + halfWidth about the centre (0, 0), from
    /// its corners and from where it crosses the axes. A full turn and more give the whole ring.
    static DRect BandBox(const tTravelledArc& arc, double halfWidth);
};

// Operations on vectors of points.
#pragma once

#include "CPoint/CPoint.h"

#include <vector>

/// Turns every point of a vector by an angle in degrees, or bounds it.
class UPointVec {
public:
    UPointVec() = delete;

    /// In the x-y plane about the centre.
    static void RotatePointVecZ(std::vector<CPoint>& points, const CPoint& centre, double angle);
    /// In the x-z plane about the centre's x and z, x towards z.
    static void RotatePointVecY(std::vector<CPoint>& points, const CPoint& centre, double angle);
    /// Brings every coordinate within what a document can hold (UReach).
    static void ClampToReach(std::vector<CPoint>& points);
};

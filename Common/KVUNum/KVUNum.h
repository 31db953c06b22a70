// Numeric helpers: rounding, limits, angles and small vectors.
#pragma once

#include <cmath>
#include <limits>

class CPoint;

/// Stateless numeric helpers. Angles in degrees.
class KVUNum {
public:
    /// Rounds to int, halves upwards, also for negative values (-2.5 gives -2). What does not fit gives the nearest
    /// int, NaN gives 0.
    static int d2i(double value)
    {
        const double rounded = std::floor(value + 0.5);
        if (rounded >= kIntMin && rounded <= kIntMax) [[likely]] {
            return static_cast<int>(rounded);
        }
        if (std::isnan(rounded)) {
            return 0;
        }
        return rounded < 0 ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }

    /// Clamps the value to [min, max]; where min lies above max a smaller value becomes min.
    /// @return true when the value was changed
    static bool EnsureMaxMinLimits(int& value, int min, int max);

    /// Whether a and b differ by less than delta; a difference of exactly delta does not count.
    static bool DeltaEquals(double a, double b, double delta) { return std::fabs(a - b) < delta; }

    /// Lifts a negative angle into 0 to below 360. An angle from 0 on comes back unchanged, even above 360.
    static double NormalizeAngle360(double angle)
    {
        while (angle < 0) {
            angle = std::fmod(angle + 720.0, 360.0);
        }
        return angle;
    }

    /// Brings an angle into -180 to 180. Only one turn is taken off a large positive angle: 900 gives 540.
    static double NormalizeAnglePlusMinus180(double angle);

    /// Cuts the value towards zero to a multiple of `step` (not 0).
    static void FixFloatingPrecision(double& value, double step) { value -= std::fmod(value, step); }

    /// Distance of two numbers, never negative.
    static double dim(double a, double b) { return std::fabs(a - b); }

    /// Maps a value linearly so that min1 gives min2 and max1 gives max2. max1 must differ from min1.
    static double ScaleValueToRange(double min1, double max1, double min2, double max2, double value)
    {
        return (value - min1) / (max1 - min1) * (max2 - min2) + min2;
    }

    static double sqr(double value) { return value * value; }

    /// Stores three coordinates in `vector`, which has three elements as all vectors here.
    static void VectorFromPoints(float* vector, double x, double y, double z);

    /// Divides by the length; a vector without length stays as it is.
    static void ReduceToUnit(float* vector);
    static void ReduceToUnit(CPoint& vector);

    /// The unit normal of the plane through three points: (b - a) x (c - a), zero where they lie on one line.
    /// `normal` may be one of the points.
    static void CalcNormal(const float* a, const float* b, const float* c, float* normal);
    static void CalcNormal(const CPoint& a, const CPoint& b, const CPoint& c, CPoint& normal);

    /// The point at p1 + t (p2 - p1). `point` may be p1 or p2.
    static void CalcPointOnLine(const CPoint& p1, const CPoint& p2, double t, CPoint& point);

    /// Where the endless line through p1 and p2 meets a sphere.
    /// @param point  set to the intersection nearer to p1, of two equally near ones that on the side of p2
    /// @return false without intersection, or where p1 and p2 are the same point; `point` is then untouched
    static bool SphereLineIntersection(const CPoint& p1, const CPoint& p2, const CPoint& center, double radius,
                                       CPoint& point);

private:
    static constexpr double kIntMin = std::numeric_limits<int>::min();
    static constexpr double kIntMax = std::numeric_limits<int>::max();
};

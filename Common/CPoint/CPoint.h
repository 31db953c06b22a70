// A point or vector of the layout.
#pragma once

#include "KVUNum/KVUNum.h"

#include <cmath>

/// A point or vector in three dimensions, copied by value. Lengths in layout units (mm); angles in degrees, positive
/// ones turn counter-clockwise. The virtual operations let derived geometry override them.
class CPoint {
public:
    /// (0, 0, 0); initialised before any code runs.
    static const CPoint ZeroPos;

    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    constexpr CPoint() = default;
    constexpr CPoint(double newX, double newY, double newZ) : x(newX), y(newY), z(newZ) {}
    constexpr CPoint(const CPoint&) = default;
    constexpr CPoint& operator=(const CPoint&) = default;
    constexpr virtual ~CPoint() = default;

    /// A coordinate rounded to int, halves upwards.
    virtual int GetIX() const { return KVUNum::d2i(x); }
    virtual int GetIY() const { return KVUNum::d2i(y); }
    virtual int GetIZ() const { return KVUNum::d2i(z); }

    /// Sets x and y and leaves z.
    virtual void SetPos(const double& newX, const double& newY)
    {
        const double yCopy = newY; // may be this->x
        x = newX;
        y = yCopy;
    }

    virtual void SetPos(const double& newX, const double& newY, const double& newZ)
    {
        *this = CPoint(newX, newY, newZ);
    }

    virtual void MoveBy(const double& dx, const double& dy, const double& dz)
    {
        *this = CPoint(x + dx, y + dy, z + dz);
    }

    /// Turns the point in the y-z plane about (y = a, z = b).
    virtual void RotateX(const double& a, const double& b, const double& angle);

    /// Turns the point in the x-z plane about (x = a, z = b), x towards z.
    virtual void RotateY(const double& a, const double& b, const double& angle);

    /// Turns the point in the x-y plane about (x = a, y = b).
    virtual void RotateZ(const double& a, const double& b, const double& angle);

    /// The same as RotateZ.
    virtual void Rotate(const double& a, const double& b, const double& angle) { RotateZ(a, b, angle); }

    /// Turns the point in the x-y plane about the centre's x and y.
    virtual void Rotate(const CPoint& centre, const double& angle) { Rotate(centre.x, centre.y, angle); }

    /// Distance in the x-y plane.
    virtual double CalcDistance2D(const CPoint& p) const
    {
        return std::sqrt((p.x - x) * (p.x - x) + (p.y - y) * (p.y - y));
    }

    virtual double CalcDistance(const CPoint& p) const { return CalcDistance(p.x, p.y, p.z); }

    virtual double CalcDistance(const double& toX, const double& toY, const double& toZ) const
    {
        return std::sqrt((toX - x) * (toX - x) + (toY - y) * (toY - y) + (toZ - z) * (toZ - z));
    }

    /// Direction in the x-y plane from here to `p`. Not normalised: between -270 and 90, and within 0.006 degrees of
    /// +-90 where the points lie less than 0.01 apart in x.
    virtual double CalcAngle(const CPoint& p) const;

    constexpr CPoint operator+(const CPoint& p) const { return {x + p.x, y + p.y, z + p.z}; }
    constexpr CPoint operator-(const CPoint& p) const { return {x - p.x, y - p.y, z - p.z}; }
    constexpr CPoint operator*(double factor) const { return {x * factor, y * factor, z * factor}; }
};

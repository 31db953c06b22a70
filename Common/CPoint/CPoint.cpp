#include "CPoint/CPoint.h"

#include "KVUNum/Angles.h"

namespace {
/// Turns (u, v) about (a, b); taken by value, since the centre may be made of the coordinates that are turned.
void RotatePlane(double& u, double& v, double a, double b, double angle)
{
    const double du = u - a;
    const double dv = v - b;
    const double c = std::cos(angle * kRadiansPerDegree);
    const double s = std::sin(angle * kRadiansPerDegree);
    u = du * c - dv * s + a;
    v = dv * c + du * s + b;
}
} // namespace

constinit const CPoint CPoint::ZeroPos;

void CPoint::RotateX(const double& a, const double& b, const double& angle)
{
    RotatePlane(y, z, a, b, angle);
}

void CPoint::RotateY(const double& a, const double& b, const double& angle)
{
    RotatePlane(x, z, a, b, angle);
}

void CPoint::RotateZ(const double& a, const double& b, const double& angle)
{
    RotatePlane(x, y, a, b, angle);
}

double CPoint::CalcAngle(const CPoint& p) const
{
    const double dx = p.x - x;
    const double dy = p.y - y;
    if (std::fabs(dx) > 0.01) {
        const double angle = std::atan(dy / dx) * kDegreesPerRadian;
        return dx < 0 ? angle - 180.0 : angle;
    }
    return std::atan(dy / 0.0001) * kDegreesPerRadian;
}

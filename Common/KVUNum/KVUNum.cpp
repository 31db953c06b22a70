#include "KVUNum/KVUNum.h"

#include "CPoint/CPoint.h"

bool KVUNum::EnsureMaxMinLimits(int& value, int min, int max)
{
    if (value < min) {
        value = min;
        return true;
    }
    if (value > max) {
        value = max;
        return true;
    }
    return false;
}

double KVUNum::NormalizeAnglePlusMinus180(double angle)
{
    if (angle >= -180.0 && angle <= 180.0) {
        return angle;
    }
    angle = NormalizeAngle360(angle);
    return angle > 180.0 ? angle - 360.0 : angle;
}

void KVUNum::VectorFromPoints(float* vector, double x, double y, double z)
{
    vector[0] = static_cast<float>(x);
    vector[1] = static_cast<float>(y);
    vector[2] = static_cast<float>(z);
}

void KVUNum::ReduceToUnit(float* vector)
{
    CPoint unit(double{vector[0]}, double{vector[1]}, double{vector[2]});
    ReduceToUnit(unit);
    VectorFromPoints(vector, unit.x, unit.y, unit.z);
}

void KVUNum::ReduceToUnit(CPoint& vector)
{
    double length = CPoint::ZeroPos.CalcDistance(vector);
    if (length == 0.0) {
        length = 1.0;
    }
    vector.SetPos(vector.x / length, vector.y / length, vector.z / length);
}

void KVUNum::CalcNormal(const float* a, const float* b, const float* c, float* normal)
{
    CPoint result;
    CalcNormal(CPoint(double{a[0]}, double{a[1]}, double{a[2]}), CPoint(double{b[0]}, double{b[1]}, double{b[2]}),
               CPoint(double{c[0]}, double{c[1]}, double{c[2]}), result);
    VectorFromPoints(normal, result.x, result.y, result.z);
}

void KVUNum::CalcNormal(const CPoint& a, const CPoint& b, const CPoint& c, CPoint& normal)
{
    const CPoint u = b - a;
    const CPoint v = c - a;
    normal.SetPos(u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x);
    ReduceToUnit(normal);
}

void KVUNum::CalcPointOnLine(const CPoint& p1, const CPoint& p2, double t, CPoint& point)
{
    const CPoint result = p1 + (p2 - p1) * t;
    point.SetPos(result.x, result.y, result.z);
}

bool KVUNum::SphereLineIntersection(const CPoint& p1, const CPoint& p2, const CPoint& center, double radius,
                                    CPoint& point)
{
    const auto dot = [](const CPoint& a, const CPoint& b) { return a.x * b.x + a.y * b.y + a.z * b.z; };
    // |p1 + t direction - center| = radius, as t^2 a - 2 t b + c = 0
    const CPoint direction = p2 - p1;
    const CPoint toCenter = center - p1;
    const double a = dot(direction, direction);
    const double b = dot(direction, toCenter);
    const double c = dot(toCenter, toCenter) - radius * radius;
    const double discriminant = b * b - a * c;
    if (!(a > 0.0) || !(discriminant >= 0.0)) { // also for coordinates that are no numbers
        return false;
    }
    const double root = std::sqrt(discriminant);
    const double before = (b - root) / a;
    const double behind = (b + root) / a;
    CalcPointOnLine(p1, p2, std::fabs(before) < std::fabs(behind) ? before : behind, point);
    return true;
}

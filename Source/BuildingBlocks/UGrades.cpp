#include "BuildingBlocks/UGrades.h"

#include "KVUNum/Angles.h"

#include <cmath>

double UGrades::PerMilleToRatio(double x)
{
    return 1.0 / x;
}

double UGrades::PerMilleToAngle(double x)
{
    return std::atan(x) * kDegreesPerRadian;
}

double UGrades::AngleToPerMille(double angle)
{
    return std::tan(angle * kRadiansPerDegree);
}

double UGrades::GradeFromHeightDiff(double length, double heightDiff)
{
    return std::atan(heightDiff / length) * kDegreesPerRadian;
}

void UGrades::ApplyGradeToPoint(CPoint& point, const CGradeVector& grade)
{
    const CPoint& start = grade.GetStartPoint();
    CPoint turned(point.x, point.y, 0.0);
    turned.RotateZ(start.x, start.y, -grade.GetAngleToXAxis());
    turned.RotateY(start.x, start.z, grade.GetGradeAngle());
    point.z = turned.z;
}

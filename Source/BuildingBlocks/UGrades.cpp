#include "BuildingBlocks/UGrades.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"

#include <cmath>
#include <utility>
#include <vector>

namespace {
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kRadiansPerDegree = 0.017453292519943295;
} // namespace

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

CGradeVector UGrades::GetGradeVectorForHeightDiffBetweenJoints(CCompositeGeometry* element, const CJoint* jointA,
                                                               const CJoint* jointB, double heightDiff)
{
    element->DefineAllJoints();
    CPoint start = jointA->GetLocalPoint();
    CPoint end = jointB->GetLocalPoint();
    start.z = end.z = 0.0;
    return CGradeVector(start, end, heightDiff);
}

void UGrades::FixGradeForTrack(CCompositeGeometry* element)
{
    std::vector<CJoint*> joints;
    element->GetJoints(joints, true, true);
    if (joints.size() != 2) {
        return;
    }
    CJoint* lower = joints[0];
    CJoint* upper = joints[1];
    double lowerHeight = lower->GetPosition().z;
    double upperHeight = upper->GetPosition().z;
    if (lower->GetPartner() != nullptr && upper->GetPartner() != nullptr) {
        lowerHeight = lower->GetPartner()->GetPosition().z;
        upperHeight = upper->GetPartner()->GetPosition().z;
    }
    if (upperHeight < lowerHeight) {
        std::swap(lower, upper);
        std::swap(lowerHeight, upperHeight);
    }
    element->SetZPosition(lowerHeight);
    element->SetGrade(GetGradeVectorForHeightDiffBetweenJoints(element, lower, upper, upperHeight - lowerHeight));
    element->DefineAllJoints();
}

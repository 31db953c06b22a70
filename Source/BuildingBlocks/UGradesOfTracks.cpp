// The half of UGrades that knows elements: components use the other one.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"
#include "BuildingBlocks/UGrades.h"

#include <utility>
#include <vector>

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

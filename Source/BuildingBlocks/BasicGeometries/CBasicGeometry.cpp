#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"

#include "BuildingBlocks/CFieldStream.h"
#include "BuildingBlocks/UGrades.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/KVURawMem.h"
#include "Utilities/Geometry/UPointVec.h"
#include "Utilities/Geometry/UReach.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

CBasicGeometry::CBasicGeometry() = default;

CBasicGeometry::CBasicGeometry(CBasicGeometry* source)
{
    CErr::CheckNull(source, "CBasicGeometry::CBasicGeometry(CBasicGeometry *)",
                    "Invalid input parameter for copy constructor");
    mItemXOffset = source->GetItemXOffset();
    mItemYOffset = source->GetItemYOffset();
    mGauge = source->GetGauge();
    mTrackbedWidth = source->GetTrackbedWidth();
    mAngle = source->GetAngle();
    mTrackLength = source->GetTrackLength();
    mRailWidth = source->GetRailWidth();
    mMidRailFlag = source->GetMidRailFlag();
    source->GetFixedColor(mFixedColor);
    AllowJoints(source->IsJointAllowed(0), source->IsJointAllowed(1));
}

CBasicGeometry::CBasicGeometry(void* raw)
{
    const void* cursor = raw;
    cursor = UReach::Fetch(cursor, mItemXOffset);
    cursor = UReach::Fetch(cursor, mItemYOffset);
    cursor = UReach::Fetch(cursor, mGauge);
    cursor = UReach::Fetch(cursor, mAngle);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mJointAllowed[0]);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mJointAllowed[1]);
    cursor = UReach::Fetch(cursor, mTrackbedWidth);
    cursor = UReach::Fetch(cursor, mRailWidth);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mMidRailFlag);
    KVURawMem::FetchDataFromRawMem(cursor, mFixedColor);
    mTrackLength = 0.0; // not in the record; the concrete component knows how to measure itself
}

CBasicGeometry& CBasicGeometry::operator=(const CBasicGeometry& source)
{
    if (this != &source) {
        mItemXOffset = source.mItemXOffset;
        mItemYOffset = source.mItemYOffset;
        mGauge = source.mGauge;
        mTrackbedWidth = source.mTrackbedWidth;
        mRailWidth = source.mRailWidth;
        mAngle = source.mAngle;
        mTrackLength = source.mTrackLength;
        mMidRailFlag = source.mMidRailFlag;
        mFixedColor = source.mFixedColor;
        AllowJoints(source.mJointAllowed[0], source.mJointAllowed[1]);
    }
    return *this;
}

void CBasicGeometry::AllowJoints(bool joint0, bool joint1)
{
    mJointAllowed[0] = joint0;
    mJointAllowed[1] = joint1;
    mJoints[0].SetActiveTo(joint0);
    mJoints[1].SetActiveTo(joint1);
}

bool CBasicGeometry::IsScale(double factor)
{
    return factor >= 1.0 / UReach::kFarthest && factor <= UReach::kFarthest;
}

int CBasicGeometry::ScaledSize(int size, double factor)
{
    return size > 0 ? static_cast<int>(std::clamp(std::round(size * factor), 1.0, UReach::kFarthest)) : size;
}

void CBasicGeometry::CalcPlacedBox(DRect& box, double angle)
{
    CalcBoundingBox(box, angle);
}

void CBasicGeometry::Scale(double factor, bool scaleOffset)
{
    mGauge = UReach::Clamp(mGauge * factor);
    mTrackbedWidth = UReach::Clamp(mTrackbedWidth * factor);
    if (scaleOffset) {
        mItemXOffset = UReach::Clamp(mItemXOffset * factor);
        mItemYOffset = UReach::Clamp(mItemYOffset * factor);
    }
}

void CBasicGeometry::SetJointOwner(CCompositeGeometry* owner)
{
    mJoints[0].SetOwner(owner);
    mJoints[1].SetOwner(owner);
}

void CBasicGeometry::TransferFields(CFieldStream& fields)
{
    fields.Pass(mItemXOffset, mItemYOffset, mGauge, mTrackbedWidth, mRailWidth, mAngle, mTrackLength, mMidRailFlag,
                mFixedColor, mJointAllowed);
    fields.Align();
}

void* CBasicGeometry::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, mItemXOffset);
    destination = KVURawMem::AppendDataToRawMem(destination, mItemYOffset);
    destination = KVURawMem::AppendDataToRawMem(destination, mGauge);
    destination = KVURawMem::AppendDataToRawMem(destination, mAngle);
    destination = KVURawMem::AppendDataToRawMem(destination, mJointAllowed[0]);
    destination = KVURawMem::AppendDataToRawMem(destination, mJointAllowed[1]);
    destination = KVURawMem::AppendDataToRawMem(destination, mTrackbedWidth);
    destination = KVURawMem::AppendDataToRawMem(destination, mRailWidth);
    destination = KVURawMem::AppendDataToRawMem(destination, mMidRailFlag);
    return KVURawMem::AppendDataToRawMem(destination, mFixedColor);
}

void CBasicGeometry::DefineTrackItemArea(double, double, std::vector<CPoint>&) {}

void CBasicGeometry::DefineTrackItemOutline(double, double, std::vector<CPoint>&) {}

void CBasicGeometry::SetLineThickness(int) {}

void CBasicGeometry::DefineTrackItemOutlineAndHeight(double angle, double distance, CGradeVector& grade,
                                                     std::vector<CPoint>& points)
{
    DefineTrackItemOutline(angle, distance, points);
    if (!grade.IsGraded()) {
        return;
    }
    std::vector<CPoint> turned(points);
    UPointVec::RotatePointVecZ(turned, grade.GetStartPoint(), -grade.GetAngleToXAxis());
    UPointVec::RotatePointVecY(turned, grade.GetStartPoint(), grade.GetGradeAngle());
    for (size_t i = 0; i < points.size() && i < turned.size(); ++i) {
        points[i].z = turned[i].z;
    }
}

void CBasicGeometry::CalcTrackMarks(double angle, CPoint& a1, CPoint& a2, CPoint& b1, CPoint& b2)
{
    DefineJoints(CPoint::ZeroPos, angle, CGradeVector::ZeroGrade, kPlaceForTrackMarks);
    const double width = CalcTrackMarkerWidth();
    mJoints[0].CalculateTrackMarkEndpoints(CJoint::kMarkLocalPoint, width, a1, a2);
    mJoints[1].CalculateTrackMarkEndpoints(CJoint::kMarkLocalPoint, width, b1, b2);
}

void CBasicGeometry::CalcTrackMarks(double angle, CGradeVector& grade, CPoint& a1, CPoint& a2, CPoint& b1, CPoint& b2)
{
    CalcTrackMarks(angle, a1, a2, b1, b2);
    for (CPoint* point : {&a1, &a2, &b1, &b2}) {
        UGrades::ApplyGradeToPoint(*point, grade);
    }
}

CPoint& CBasicGeometry::GetRotationReferencePoint(double)
{
    return mJoints[0].GetLocalPoint();
}

void CBasicGeometry::GetJoints(const CPoint& origin, double angle, const CGradeVector& grade,
                               std::vector<CJoint*>& joints, bool recalculate)
{
    joints.clear();
    if (recalculate) {
        DefineJoints(origin, angle, grade, kPlaceForConnection);
    }
    joints.reserve(2);
    joints.push_back(&mJoints[0]);
    joints.push_back(&mJoints[1]);
}

void CBasicGeometry::SetJointPos(int i, double x, double y)
{
    DefineJoints(CPoint::ZeroPos, 0.0, CGradeVector::ZeroGrade, kPlaceForConnection);
    const CPoint& position = mJoints[i].GetPosition();
    mItemXOffset += x - position.x;
    mItemYOffset += y - position.y;
}

void CBasicGeometry::GetJointPos(int i, double& x, double& y)
{
    x = mJoints[i].GetPosition().x;
    y = mJoints[i].GetPosition().y;
}

void CBasicGeometry::FinishJoints(const CPoint& origin, const CGradeVector& grade, int mode)
{
    const bool graded = grade.IsGraded();
    for (CJoint& joint : mJoints) {
        if (graded) {
            UGrades::ApplyGradeToPoint(joint.GetLocalPoint(), grade);
        } else {
            joint.GetLocalPoint().z = 0.0;
        }
        if (mode == kPlaceForConnection) {
            const CPoint& local = joint.GetLocalPoint();
            joint.GetPosition().SetPos(local.x + origin.x, local.y + origin.y, local.z + origin.z);
        }
    }
}

void CBasicGeometry::GetCenter(CPoint& centre, double angle)
{
    DRect box = {};
    CalcBoundingBox(box, angle);
    centre.SetPos(box.left + (box.right - box.left) / 2.0, box.top + (box.bottom - box.top) / 2.0);
}

void CBasicGeometry::SetCenter(CPoint& centre)
{
    CPoint current;
    GetCenter(current, 0.0);
    MoveItemBy(centre.x - current.x, centre.y - current.y);
}

void CBasicGeometry::SetCenter(double x, double y)
{
    CPoint centre(x, y, 0.0);
    SetCenter(centre);
}

void CBasicGeometry::WarnUnsupported(const char* function, int version)
{
    ULog::Warn("%s: Unsupported file format (version %d)", function, version);
}

// In the order of their records.
auto CBasicGeometry::CommonFields()
{
    return std::tie(mItemXOffset, mItemYOffset, mGauge, mAngle, mJointAllowed[0], mJointAllowed[1], mTrackbedWidth,
                    mRailWidth, mMidRailFlag, mFixedColor);
}

bool CBasicGeometry::Load(FILE* file, int version)
{
    if (!IsKnownVersion(version)) {
        WarnUnsupported("virtual bool CBasicGeometry::Load(FILE *, int)", version);
        return false;
    }
    CTaggedFile(file).ReadTable<ComponentFormat::kCommon>(CommonFields());
    mJoints[0].SetActiveTo(mJointAllowed[0]);
    mJoints[1].SetActiveTo(mJointAllowed[1]);
    return true;
}

void CBasicGeometry::Save(FILE* file)
{
    CTaggedFile(file).WriteTable<ComponentFormat::kCommon>(CommonFields());
}

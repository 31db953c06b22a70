#include "BuildingBlocks/CJoint.h"

#include <cmath>

int CJoint::sNumHiLiteJoints = 0;

namespace {
constexpr double kConnectionTolerance = 0.01; ///< degrees
}

CJoint::~CJoint()
{
    if (mPartner != nullptr) {
        mPartner->mActive = true;
        mPartner->mPartner = nullptr;
    }
}

CJoint& CJoint::operator=(const CJoint& source)
{
    if (this != &source) {
        mAngle = source.mAngle;
        mOwner = source.mOwner;
        mPartner = source.mPartner;
        mActive = source.mActive;
        mComponentFlag = source.mComponentFlag;
        mOpFlag = source.mOpFlag;
        mPosition = source.mPosition;
        mLocalPoint = source.mPosition;
    }
    return *this;
}

void CJoint::ConnectToJoint(CJoint* other)
{
    mActive = false;
    other->mActive = false;
    mPartner = other;
    other->mPartner = this;
}

void CJoint::DisconnectJoint()
{
    if (mPartner != nullptr) {
        mPartner->mActive = true;
        mPartner->mPartner = nullptr;
    }
    mActive = true;
    mPartner = nullptr;
}

bool CJoint::AppropriateAngleForConnection(const CJoint& other) const
{
    const double difference = std::fabs(std::fmod(mAngle - (other.mAngle + 180.0), 360.0));
    return difference < kConnectionTolerance || 360.0 - difference < kConnectionTolerance;
}

bool CJoint::LiesAt(const CJoint& other) const
{
    return std::fabs(mPosition.x - other.mPosition.x) <= kSnapTolerance &&
           std::fabs(mPosition.y - other.mPosition.y) <= kSnapTolerance &&
           std::fabs(mPosition.z - other.mPosition.z) <= kSnapTolerance;
}

double CJoint::DistanceToJoint(const CJoint& other) const
{
    return mPosition.CalcDistance2D(other.mPosition);
}

void CJoint::CalculateTrackMarkEndpoints(int which, double halfWidth, CPoint& a, CPoint& b) const
{
    const CPoint& base = which == kMarkLocalPoint ? mLocalPoint : mPosition;
    a = CPoint(base.x, base.y - halfWidth, base.z);
    b = CPoint(base.x, base.y + halfWidth, base.z);
    a.Rotate(base, mAngle);
    b.Rotate(base, mAngle);
}

void CJoint::SetFlag(tJointOpFlag flag)
{
    mOpFlag = flag;
    if (flag != 0) {
        IncNumberOfHighlightedJoints();
    } else {
        DecNumberOfHighlightedJoints();
    }
}

void CJoint::ClearFlag()
{
    mOpFlag = 0;
    DecNumberOfHighlightedJoints();
}

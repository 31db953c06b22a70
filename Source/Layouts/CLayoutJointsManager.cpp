#include "Layouts/CLayoutJointsManager.h"

#include "BuildingBlocks/CJoint.h"
#include "CPoint/CPoint.h"
#include "CheckError/CErr.h"
#include "Preferences/CVLPreferences.h"
#include "UnitLength/URailConstants.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <new>

namespace {
constexpr double kSmallestSnapRadius = 2.5;
/// By how much the searched square exceeds the radius.
constexpr double kSnapAreaMargin = 1.0;
constexpr int kDefaultScale = 16;
} // namespace

CLayoutJointsManager* CLayoutJointsManager::mSingletonInstance = nullptr;

CLayoutJointsManager* CLayoutJointsManager::Instance()
{
    if (mSingletonInstance == nullptr) {
        mSingletonInstance = new (std::nothrow) CLayoutJointsManager;
        CErr::CheckNull(mSingletonInstance, "static CLayoutJointsManager *CLayoutJointsManager::Instance()",
                        "Failed to construct CLayoutJointsManager singleton member");
    }
    return mSingletonInstance;
}

CLayoutJointsManager::CLayoutJointsManager()
{
    SetSnapRadius(URailConstants::GetModelScaleTW(kDefaultScale));
}

void CLayoutJointsManager::SnapCloseJoints()
{
    Instance()->privateSnapCloseJoints();
}

void CLayoutJointsManager::SetSnapRadius(double trackWidth)
{
    const double factor = CVLPreferences::Instance()->mSnapAreaFactor;
    mSnapRadius = std::max(kSmallestSnapRadius, factor / 100.0 * trackWidth);
}

template <typename tBelongs>
int CLayoutJointsManager::RemoveJoints(tBelongs belongs)
{
    // Last to first, as joints may be connected to each other; those that stay keep their order.
    for (size_t i = mJoints.size(); i-- > 0;) {
        if (!mJoints[i]->IsActive() && belongs(mJoints[i])) {
            mJoints[i]->DisconnectJoint();
        }
    }
    const auto first = std::remove_if(mJoints.begin(), mJoints.end(), belongs);
    const int removed = static_cast<int>(mJoints.end() - first);
    mJoints.erase(first, mJoints.end());
    return removed;
}

int CLayoutJointsManager::RemoveJointsForItem(CCompositeGeometry* item)
{
    return RemoveJoints([item](const CJoint* joint) { return joint->GetOwner() == item; });
}

int CLayoutJointsManager::RemoveJointsForItems(const std::unordered_set<CCompositeGeometry*>& items)
{
    return RemoveJoints([&items](const CJoint* joint) { return items.count(joint->GetOwner()) != 0; });
}

void CLayoutJointsManager::DisconnectAllJoints()
{
    for (CJoint* joint : mJoints) {
        if (!joint->IsActive()) {
            joint->DisconnectJoint();
        }
    }
}

CJoint* CLayoutJointsManager::FindJointClosestToPoint(const CPoint& point) const
{
    std::vector<CJoint*> candidates;
    FindAllJointsCloseToPoint(point, candidates);
    CJoint* best = nullptr;
    double bestDistance = 0.0;
    for (CJoint* candidate : candidates) {
        const double distance = candidate->GetPosition().CalcDistance(point);
        if (best == nullptr || distance < bestDistance) {
            best = candidate;
            bestDistance = distance;
        }
    }
    return best;
}

void CLayoutJointsManager::FindAllJointsCloseToPoint(const CPoint& point, std::vector<CJoint*>& joints) const
{
    DRect area;
    GetSnapArea(area, point);
    for (CJoint* joint : mJoints) {
        if (UDRect::PtInDRect(area, joint->GetPosition())) {
            joints.push_back(joint);
        }
    }
}

void CLayoutJointsManager::GetSnapArea(DRect& area, const CPoint& point) const
{
    const double reach = mSnapRadius + kSnapAreaMargin;
    UDRect::SetDRect(area, point.x - reach, point.y - reach, point.x + reach, point.y + reach);
}

int CLayoutJointsManager::FindUnsnappedJointCloseToJoint(const CJoint* joint) const
{
    DRect area;
    GetSnapArea(area, joint->GetPosition());
    for (size_t i = mJoints.size(); i-- > 0;) {
        const CJoint* candidate = mJoints[i];
        if (candidate->IsActive() && UDRect::PtInDRect(area, candidate->GetPosition()) &&
            IsRotationValidForSnap(joint, candidate)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool CLayoutJointsManager::IsRotationValidForSnap(const CJoint* a, const CJoint* b) const
{
    const double limit = CVLPreferences::Instance()->mSnapLimit;
    const double difference = std::fabs(std::fmod(a->GetAngle() - (b->GetAngle() + 180.0), 360.0));
    return limit >= difference || difference >= 360.0 - limit;
}

int CLayoutJointsManager::GetNumberOfSnappedJoints() const
{
    return static_cast<int>(
        std::count_if(mJoints.begin(), mJoints.end(), [](const CJoint* joint) { return !joint->IsActive(); }));
}

void CLayoutJointsManager::privateSnapCloseJoints()
{
    std::multimap<double, CJoint*> free;
    for (CJoint* joint : mJoints) {
        if (joint->IsActive()) {
            free.emplace(joint->GetPosition().x, joint);
        }
    }
    for (auto a = free.begin(); a != free.end(); ++a) {
        if (!a->second->IsActive()) {
            continue;
        }
        for (auto b = std::next(a); b != free.end(); ++b) {
            if (!b->second->IsActive() || b->second->GetOwner() == a->second->GetOwner()) {
                continue;
            }
            if (b->first - a->first > CJoint::kSnapTolerance) {
                break;
            }
            // Whatever radius the user prefers for dragging.
            if (a->second->LiesAt(*b->second) && a->second->AppropriateAngleForConnection(*b->second)) {
                a->second->ConnectToJoint(b->second);
                break;
            }
        }
    }
}

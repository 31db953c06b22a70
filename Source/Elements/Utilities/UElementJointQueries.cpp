#include "Elements/Utilities/UElementJointQueries.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "BuildingBlocks/CJoint.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"

#include <boost/foreach.hpp>

#include <unordered_map>
#include <unordered_set>

namespace {
using tElements = UElementJointQueries::tElements;
using tJoints = UElementJointQueries::tJoints;
using tTrack = UElementJointQueries::tTrack;

tJoints AllJoints(CCompositeGeometry* element)
{
    tJoints joints;
    element->GetJoints(joints, true, false);
    return joints;
}

/// The first joint that none of the others precedes.
template <typename tPrecedes>
CJoint* FindOutermost(const tJoints& joints, tPrecedes precedes)
{
    CJoint* outermost = nullptr;
    BOOST_FOREACH(CJoint* joint, joints) {
        if (outermost == nullptr || precedes(joint->GetPosition().x, outermost->GetPosition().x)) {
            outermost = joint;
        }
    }
    return outermost;
}

/// The joints from which a walk along connected tracks goes on.
///
/// An element pushes its connected joints every time that it is entered. The walk passes a joint by when it comes to it
/// again, so of all these pushes only one counts: the last within the level in which the element is entered first,
/// since what is pushed last is followed first. Only that one is made; an element of many joints that is entered
/// through all of them would cost their square otherwise.
class CNextLevel {
public:
    void Enter(CCompositeGeometry* element)
    {
        tEntry& last = mLastEntries.try_emplace(element, tEntry{mLevel, 0}).first->second;
        if (last.level == mLevel) {
            last.index = mEntered.size();
            mEntered.push_back(element);
        }
    }
    /// Appends the joints of this level to `joints` and begins the next one.
    void Push(tJoints& joints)
    {
        for (size_t i = 0; i < mEntered.size(); ++i) {
            if (mLastEntries[mEntered[i]].index == i) {
                UElementJointQueries::GetConnectedJoints(mEntered[i], joints);
            }
        }
        mEntered.clear();
        ++mLevel;
    }

private:
    struct tEntry {
        size_t level;
        size_t index; ///< in mEntered of that level
    };

    size_t mLevel = 0;
    tElements mEntered;
    std::unordered_map<const CCompositeGeometry*, tEntry> mLastEntries;
};
} // namespace

CJoint* UElementJointQueries::GetJointWithMinX(CCompositeGeometry* element)
{
    return GetJointWithMinX(AllJoints(element));
}

CJoint* UElementJointQueries::GetJointWithMinX(const tJoints& joints)
{
    return FindOutermost(joints, [](double x, double outermost) { return x < outermost; });
}

CJoint* UElementJointQueries::GetJointWithMaxX(CCompositeGeometry* element)
{
    return GetJointWithMaxX(AllJoints(element));
}

CJoint* UElementJointQueries::GetJointWithMaxX(const tJoints& joints)
{
    return FindOutermost(joints, [](double x, double outermost) { return x > outermost; });
}

CJoint* UElementJointQueries::GetOppositeJoint(const CJoint* joint)
{
    const CCompositeGeometry* element = joint->GetOwner();
    if (element == nullptr) {
        return nullptr;
    }
    BOOST_FOREACH(CBasicGeometry* component, element->GetComponents()) {
        if (component->GetJoint(0) == joint) {
            return component->GetJoint(1);
        }
        if (component->GetJoint(1) == joint) {
            return component->GetJoint(0);
        }
    }
    return nullptr;
}

int UElementJointQueries::GetNextConnectedJointIdx(CCompositeGeometry* element)
{
    constexpr char kFunction[] = "static int UElementJointQueries::GetNextConnectedJointIdx(CCompositeGeometry *)";
    const tJoints joints = AllJoints(element);
    if (joints.empty()) {
        return -1;
    }
    size_t last = joints.size();
    while (last > 0 && joints[last - 1]->IsActive()) {
        --last;
    }
    if (last == 0) {
        ULog::Warn("%s: No connected joint found for %s?", kFunction, element->GetName());
        return -1;
    }
    const size_t next = last == joints.size() ? 0 : last; // `last` counts from 1
    if (!joints[next]->IsActive()) {
        ULog::Warn("%s: More than 1 connected joint found for %s?", kFunction, element->GetName());
        return -1;
    }
    return static_cast<int>(next);
}

int UElementJointQueries::GetNumberOfJoints(CCompositeGeometry* element)
{
    return static_cast<int>(AllJoints(element).size());
}

int UElementJointQueries::GetNumberOfConnectedJoints(CCompositeGeometry* element)
{
    return GetNumberOfJoints(element) - GetNumberOfUnconnectedJoints(element);
}

int UElementJointQueries::GetNumberOfUnconnectedJoints(CCompositeGeometry* element)
{
    tJoints joints;
    element->GetJoints(joints, false, false);
    return static_cast<int>(joints.size());
}

CJoint* UElementJointQueries::GetFirstConnectedJoint(CCompositeGeometry* element)
{
    BOOST_FOREACH(CJoint* joint, AllJoints(element)) {
        if (!joint->IsActive()) {
            return joint;
        }
    }
    return nullptr;
}

int UElementJointQueries::GetIndexOfJointInElementJointVector(CCompositeGeometry* element, const CJoint* joint)
{
    const tJoints joints = AllJoints(element);
    for (size_t i = joints.size(); i-- > 0;) {
        if (joints[i] == joint) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

void UElementJointQueries::GetJointConnections(CCompositeGeometry* element, tJoints& own, tJoints& partners)
{
    BOOST_FOREACH(CJoint* joint, AllJoints(element)) {
        if (!joint->IsActive()) {
            own.push_back(joint);
            partners.push_back(joint->GetPartner());
        }
    }
}

void UElementJointQueries::GetConnectedJoints(CCompositeGeometry* element, tJoints& out)
{
    BOOST_FOREACH(CJoint* joint, AllJoints(element)) {
        if (!joint->IsActive()) {
            out.push_back(joint);
        }
    }
}

void UElementJointQueries::ExcludeJointFromJointVector(const tJoints& joints, const CJoint* excluded, tJoints& out)
{
    tJoints kept; // `out` may be `joints`
    BOOST_FOREACH(CJoint* joint, joints) {
        if (joint != excluded) {
            kept.push_back(joint);
        }
    }
    out.swap(kept);
}

void UElementJointQueries::GetAllTracksWithJointsConnectedToJoint(CJoint* joint, std::vector<tTrack>& out)
{
    constexpr char kFunction[] = "static void UElementJointQueries::GetAllTracksWithJointsConnectedToJoint(CJoint *, "
                                 "vector<pair<CCIG *, CJoint *> > &)";
    out.clear();
    const CCompositeGeometry* start = joint != nullptr ? joint->GetOwner() : nullptr;
    std::unordered_set<const CJoint*> reached; // a joint has one owner, so it stands for the pair
    tJoints level = {joint};
    CNextLevel next;
    while (!level.empty()) {
        while (!level.empty()) {
            const CJoint* current = level.back();
            level.pop_back();
            CErr::CheckNull(current, kFunction, "Failed to fetch CJoint instance from stack");
            CJoint* partner = current->GetPartner();
            if (partner == nullptr) {
                continue;
            }
            CCompositeGeometry* track = partner->GetOwner();
            CErr::CheckNull(track, kFunction, "Failed to fetch track from neighbour joint");
            if (track != start && reached.insert(partner).second) {
                out.emplace_back(track, partner);
                next.Enter(track);
            }
        }
        next.Push(level);
    }
}

void UElementJointQueries::GetAllTracksConnectedToJoint(CJoint* joint, tElements& out)
{
    std::vector<tTrack> tracks;
    GetAllTracksWithJointsConnectedToJoint(joint, tracks);
    out.clear();
    BOOST_FOREACH(const tTrack& track, tracks) {
        out.push_back(track.first);
    }
}

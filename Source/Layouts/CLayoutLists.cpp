// The lists of elements and groups, kept consistent with statistics, groups and joints.
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutJointsManager.h"
#include "Layouts/CLayoutStatistics.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/UGroups.h"

#include <boost/foreach.hpp>

#include <algorithm>

namespace {
template <typename tItem>
void DestroyAll(std::vector<tItem*>& items, const char* function, const char* message)
{
    std::vector<tItem*> doomed;
    doomed.swap(items);
    BOOST_FOREACH(tItem* item, doomed) {
        CErr::CheckNull(item, function, message);
        delete item;
    }
    doomed.clear();
    items.swap(doomed); // keeps the room for the next load
}
} // namespace

void CLayout::AddItem(CCompositeGeometry* element)
{
    AddItem(element, true);
}

void CLayout::AddItem(CCompositeGeometry* element, bool takePrice)
{
    if (takePrice) {
        mStatistics->MatchPrice(element);
    }
    mElements.push_back(element);
    mStatistics->ElementAdded(element);
    if (mJointsConnected) {
        RegisterJoints({element});
    }
}

bool CLayout::RemoveItem(CCompositeGeometry* element)
{
    const auto found = std::find(mElements.begin(), mElements.end(), element);
    if (found == mElements.end()) {
        return false;
    }
    Forget({element});
    mElements.erase(found);
    return true;
}

bool CLayout::DeleteItem(CCompositeGeometry* element)
{
    if (!RemoveItem(element)) {
        return false;
    }
    delete element;
    return true;
}

void CLayout::DeleteItemVec(std::vector<CCompositeGeometry*>& elements)
{
    const std::unordered_set<CCompositeGeometry*> named(elements.begin(), elements.end());
    elements.clear();
    const auto leaves = [&named](CCompositeGeometry* element) { return named.count(element) != 0; };
    std::vector<CCompositeGeometry*> doomed;
    std::copy_if(mElements.begin(), mElements.end(), std::back_inserter(doomed), leaves);
    Forget(std::unordered_set<CCompositeGeometry*>(doomed.begin(), doomed.end()));
    mElements.erase(std::remove_if(mElements.begin(), mElements.end(), leaves), mElements.end());
    UElementVectorOperations::DeleteItemVector(doomed);
}

void CLayout::Forget(const std::unordered_set<CCompositeGeometry*>& leaving)
{
    CLayoutJointsManager::Instance()->RemoveJointsForItems(leaving);
    mStatistics->ElementsRemoved(leaving);
    std::vector<CGroup*> emptied;
    UGroups::RemoveElements(&mGroupsManager, leaving, emptied);
    RemoveGroupVec(emptied);
    BOOST_FOREACH(CGroup* group, emptied) {
        delete group;
    }
}

bool CLayout::MoveItemToEnd(CCompositeGeometry* element)
{
    return MoveItemToIndex(element, static_cast<int>(mElements.size()));
}

bool CLayout::MoveItemToIndex(CCompositeGeometry* element, int index)
{
    const auto found = std::find(mElements.begin(), mElements.end(), element);
    if (found == mElements.end()) {
        return false;
    }
    const auto target = mElements.begin() + std::clamp(index, 0, static_cast<int>(mElements.size()) - 1);
    if (target < found) {
        std::rotate(target, found, found + 1);
    } else {
        std::rotate(found, found + 1, target + 1);
    }
    return true;
}

void CLayout::InsertItemVec(std::vector<CCompositeGeometry*>& elements, bool select, bool takePrices)
{
    if (select) {
        BOOST_FOREACH(CCompositeGeometry* element, mElements) {
            element->Unselect();
        }
    }
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        AddItem(element, takePrices);
        if (select) {
            element->Select();
        }
    }
    CLayoutJointsManager::SnapCloseJoints();
}

void CLayout::ClearItemVec()
{
    DisconnectJoints();
    DestroyAll(mElements, "void CLayout::ClearItemVec()", "Bad CCompositeGeometry reference fetched from mElements");
    mStatistics->Refresh(mElements);
}

void CLayout::AddGroupVec(const std::vector<CGroup*>& groups)
{
    mGroups.insert(mGroups.end(), groups.begin(), groups.end());
}

void CLayout::RemoveGroup(CGroup* group)
{
    mGroups.erase(std::remove(mGroups.begin(), mGroups.end(), group), mGroups.end());
}

void CLayout::RemoveGroupVec(const std::vector<CGroup*>& groups)
{
    if (groups.empty()) {
        return;
    }
    const std::unordered_set<CGroup*> leaving(groups.begin(), groups.end());
    mGroups.erase(
        std::remove_if(mGroups.begin(), mGroups.end(), [&leaving](CGroup* group) { return leaving.count(group) != 0; }),
        mGroups.end());
}

bool CLayout::ContainsGroup(const CGroup* group) const
{
    return UGroups::GetGroupIndexInVector(mGroups, group) >= 0;
}

void CLayout::ClearGroupVec()
{
    DestroyAll(mGroups, "void CLayout::ClearGroupVec()", "Bad CGroup reference fetched from mGroups");
}

void CLayout::BackupGroupAndItemVec(std::vector<CCompositeGeometry*>& elements, std::vector<int>& groups)
{
    elements.clear();
    UElementVectorOperations::CloneItemVector(mElements, elements);
    UGroups::SerializeGroups(mGroups, mElements, groups);
}

void CLayout::RestoreGroupAndItemVec(std::vector<CCompositeGeometry*>& elements, const std::vector<int>& groups)
{
    const bool connected = mJointsConnected;
    ClearItemVec();
    ClearGroupVec();
    mElements.swap(elements);
    mStatistics->Refresh(mElements);
    UGroups::DeserializeGroups(&mGroupsManager, mGroups, mElements, groups);
    mJointsConnected = connected;
    if (connected) {
        RegisterJoints(mElements);
    }
    CLayoutJointsManager::SnapCloseJoints();
}

void CLayout::RegisterJoints(const std::vector<CCompositeGeometry*>& elements)
{
    std::vector<CJoint*> joints;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        element->GetJoints(joints, true, true);
        for (CJoint* joint : joints) {
            CLayoutJointsManager::Instance()->InsertJoint(joint);
        }
    }
}

void CLayout::ConnectJoints()
{
    DisconnectJoints();
    RegisterJoints(mElements);
    mJointsConnected = true;
    CLayoutJointsManager::SnapCloseJoints();
}

void CLayout::DisconnectJoints()
{
    mJointsConnected = false;
    CLayoutJointsManager* joints = CLayoutJointsManager::Instance();
    if (!joints->IsEmpty()) { // as it is in an import, which must not pay for it
        joints->RemoveJointsForItems({mElements.begin(), mElements.end()});
    }
}

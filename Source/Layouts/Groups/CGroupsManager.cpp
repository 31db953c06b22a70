#include "Layouts/Groups/CGroupsManager.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Layouts/Groups/CGroup.h"

#include <boost/foreach.hpp>

#include <new>

CGroup* CGroupsManager::CreateGroup()
{
    CGroup* group = new (std::nothrow) CGroup(this);
    if (group != nullptr) {
        mGroups.insert(group);
    }
    return group;
}

void CGroupsManager::ForgetGroup(CGroup* group)
{
    RemoveGroup(group);
    const auto leadsThere = [group](const auto& record) { return record.second == group; };
    BOOST_FOREACH(CCompositeGeometry* element, group->mItems) {
        const auto record = mMembership.find(element); // the element itself may be gone by now
        if (record != mMembership.end() && leadsThere(*record)) {
            mMembership.erase(record);
            --group->mNumRecords;
        }
    }
    if (group->mNumRecords > 0) { // elements that it did not list
        std::erase_if(mMembership, leadsThere);
    }
}

void CGroupsManager::Group(CCompositeGeometry* element, CGroup* group)
{
    const auto [record, added] = mMembership.emplace(element, group);
    if (added) {
        ++group->mNumRecords;
    } else {
        ULog::Warn("%s: Failed to associate with group %p - Element %s already in group %p",
                   "void CGroupsManager::Group(CCompositeGeometry *, CGroup *)", static_cast<void*>(group),
                   element->GetName(), static_cast<void*>(record->second));
    }
}

void CGroupsManager::Ungroup(CCompositeGeometry* element)
{
    const auto record = mMembership.find(element);
    if (record == mMembership.end()) {
        ULog::Warn("%s: Failed to disassociate - Element %s not grouped",
                   "void CGroupsManager::Ungroup(CCompositeGeometry *)", element->GetName());
        return;
    }
    --record->second->mNumRecords;
    mMembership.erase(record);
}

CGroup* CGroupsManager::GetGroupForGeometry(CCompositeGeometry* element) const
{
    const auto found = mMembership.find(element);
    if (found == mMembership.end()) {
        ULog::Warn("%s: Element %s not grouped", "CGroup *CGroupsManager::GetGroupForGeometry(CCompositeGeometry *)",
                   element->GetName());
        return nullptr;
    }
    return found->second;
}

CGroup* CGroupsManager::GetRootGroup(CCompositeGeometry* element) const
{
    const auto found = mMembership.find(element);
    return found != mMembership.end() ? found->second->GetRootGroup() : nullptr;
}

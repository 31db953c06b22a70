#include "Layouts/Groups/CGroupsManager.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Layouts/Groups/CGroup.h"

CGroup* CGroupsManager::CreateGroup()
{
    CGroup* group = new CGroup(this);
    mGroups.insert(group);
    return group;
}

void CGroupsManager::Group(CCompositeGeometry* element, CGroup* group)
{
    const auto [record, added] = mMembership.emplace(element, group);
    if (!added) {
        ULog::Warn("%s: Failed to associate with group %p - Element %s already in group %p",
                   "void CGroupsManager::Group(CCompositeGeometry *, CGroup *)", static_cast<void*>(group),
                   element->GetName(), static_cast<void*>(record->second));
    }
}

void CGroupsManager::Ungroup(CCompositeGeometry* element)
{
    if (mMembership.erase(element) == 0) {
        ULog::Warn("%s: Failed to disassociate - Element %s not grouped",
                   "void CGroupsManager::Ungroup(CCompositeGeometry *)", element->GetName());
    }
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

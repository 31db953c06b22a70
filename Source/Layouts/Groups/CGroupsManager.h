// The registry of a layout's groups.
#pragma once

#include <map>
#include <set>

class CCompositeGeometry;
class CGroup;

/// Knows the groups of a layout and which group holds each element directly. Owns neither.
class CGroupsManager {
public:
    /// A new group of this registry, which the caller owns; null when there is no memory for one.
    CGroup* CreateGroup();
    void RemoveGroup(CGroup* group) { mGroups.erase(group); }
    /// Records who holds the element; an older record stays, with a warning.
    void Group(CCompositeGeometry* element, CGroup* group);
    /// Forgets who holds the element.
    void Ungroup(CCompositeGeometry* element);
    bool IsInGroup(CCompositeGeometry* element) const { return mMembership.count(element) != 0; }
    /// The group that holds the element directly, or null after a warning.
    CGroup* GetGroupForGeometry(CCompositeGeometry* element) const;
    /// The root of the groups around the element, or null when it is not grouped.
    CGroup* GetRootGroup(CCompositeGeometry* element) const;
    const std::set<CGroup*>& GetGroups() const { return mGroups; }

private:
    friend class CGroup;

    /// Removes a group that dies, with all records that lead to it.
    void ForgetGroup(CGroup* group);

    std::set<CGroup*> mGroups;
    std::map<CCompositeGeometry*, CGroup*> mMembership;
};

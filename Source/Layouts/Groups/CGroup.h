// One group of elements.
#pragma once

#include <cstddef>
#include <vector>

class CCompositeGeometry;
class CGroupsManager;

/// Elements and groups that are selected and moved together. Refers to its members and its parent without owning them.
/// A group is a member of at most one other, and never of one inside itself, so groups form trees.
class CGroup {
public:
    /// @param manager  where membership is registered; not owned, outlives the group
    explicit CGroup(CGroupsManager* manager);
    /// Its elements become ungrouped, its member groups top-level; nothing else is deleted.
    ~CGroup();
    CGroup(const CGroup&) = delete;
    CGroup& operator=(const CGroup&) = delete;

    /// Adds an element, unless it is grouped already.
    void AddMember(CCompositeGeometry* element);
    /// Adds a group, unless it is a member at any depth, this group itself, one that this group lies in, or a member of
    /// another group.
    void AddMember(CGroup* sub);
    /// Adds elements; of one that is grouped already the root of its groups is added instead.
    void AddMembers(const std::vector<CCompositeGeometry*>& elements);
    /// Takes the group out of the list of members; its parent stays set.
    void RemoveMember(CGroup* sub);
    /// Takes the first occurrence of the element out of the list of members; the registry keeps it.
    void RemoveMember(CCompositeGeometry* element);
    /// True when the group is a member at any depth.
    bool IsMember(const CGroup* sub) const;
    bool IsEmpty() const { return mItems.empty() && mGroups.size() == mNumRemoved; }

    /// Sets the parent, unless another one is set or the parent lies inside this group.
    void SetParentGroup(CGroup* parent);
    void ClearParentGroup() { mParent = nullptr; }
    CGroup* GetParentGroup() const { return mParent; }
    /// The group without a parent at the top of this one's tree.
    CGroup* GetRootGroup();

    /// Appends the elements of this group, then those of its member groups, in order and depth first.
    void GetAllMemberItems(std::vector<CCompositeGeometry*>& out) const;
    const std::vector<CCompositeGeometry*>& GetMemberItemsVec() const { return mItems; }
    const std::vector<CGroup*>& GetMemberGroupsVec() const;

private:
    friend class UGroups;

    /// Appends a group that is known to be no member of any other and not to contain this one, and sets its parent,
    /// which stays the one it has if that is another.
    void Attach(CGroup* sub);
    /// Takes a member group out without moving the others.
    void Detach(CGroup* sub);
    void Compact() const;

    std::vector<CCompositeGeometry*> mItems;
    /// Members, null where one was taken out: so that deleting many members one by one, first to last, costs no more
    /// than each of them. Closed up when the list is asked for or half empty.
    mutable std::vector<CGroup*> mGroups;
    mutable size_t mNumRemoved = 0;
    CGroup* mParent = nullptr;
    CGroupsManager* mManager;
    CGroup* mHolder = nullptr;         ///< in whose list of members this group stands
    mutable size_t mIndexInHolder = 0; ///< and where
};

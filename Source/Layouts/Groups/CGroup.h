// One group of elements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <vector>

class CCompositeGeometry;
class CGroupsManager;

/// Elements and groups that are selected and moved together. Refers to its members and its parent without owning them.
///
/// A group has at most one parent and never lies inside itself, so groups form trees. A parent lists its members; a
/// group can also have a parent that does not list it, as documents may say. Either ends with any of the two groups.
class CGroup {
public:
    /// @param manager  where membership is registered; not owned, outlives the group
    explicit CGroup(CGroupsManager* manager);
    /// Its elements become ungrouped, the groups whose parent it is top-level; nothing else is deleted.
    ~CGroup();
    CGroup(const CGroup&) = delete;
    CGroup& operator=(const CGroup&) = delete;

    /// Adds an element, unless it is grouped already.
    void AddMember(CCompositeGeometry* element);
    /// Becomes the group's parent, if SetParentGroup allows it, and lists it as the last member. Does nothing to one
    /// that is listed.
    void AddMember(CGroup* sub);
    /// Adds elements; of one that is grouped already the root of its groups is added instead.
    void AddMembers(const std::vector<CCompositeGeometry*>& elements);
    /// Takes the group out of the list of members; this stays its parent.
    void RemoveMember(CGroup* sub);
    /// Takes the first occurrence of the element out of the list of members; the registry keeps it.
    void RemoveMember(CCompositeGeometry* element);
    /// True when the group is listed here or, at any depth, by one that is.
    bool IsMember(const CGroup* sub) const;
    /// No elements, and no group's parent.
    bool IsEmpty() const { return mItems.empty() && mChildren.empty(); }

    /// The one way in which groups are linked. Sets the parent, which need not list this group. Where there is another
    /// parent already, or the new one lies inside this group, nothing changes and a warning says so.
    void SetParentGroup(CGroup* parent);
    /// Makes the group top-level; its parent does not list it any more.
    void ClearParentGroup();
    CGroup* GetParentGroup() const { return mParent; }
    /// The group without a parent at the top of this one's tree. However deep the tree, asking for all its groups takes
    /// time in proportion to them, as long as no link is taken away.
    CGroup* GetRootGroup();

    /// Appends the elements of this group, then those of its member groups, in order and depth first.
    void GetAllMemberItems(std::vector<CCompositeGeometry*>& out) const;
    const std::vector<CCompositeGeometry*>& GetMemberItemsVec() const { return mItems; }
    const std::vector<CGroup*>& GetMemberGroupsVec() const;

private:
    friend class CGroupsManager;
    friend class UGroups;

    /// The highest group above this one that is known without asking the next: its parent at least.
    CGroup* GetKnownAncestor() const { return mNumCutsThen == sNumCuts ? mAncestor : mParent; }
    void RememberRoot(CGroup* root);

    std::vector<CCompositeGeometry*> mItems;
    std::list<CGroup*> mChildren; ///< whose parent this is; those listed in the order in which they became members
    mutable std::vector<CGroup*> mMembers; ///< the children that are listed, once somebody asked for them
    mutable bool mMembersAreCurrent = true;
    CGroup* mParent = nullptr;
    std::list<CGroup*>::iterator mPlace; ///< among the parent's children, when there is a parent
    bool mIsListed = false;              ///< by the parent
    CGroupsManager* mManager;
    size_t mNumRecords = 0; ///< elements that the registry has in this group; listed or not

    // Links that are added leave an ancestor one; a link that is taken away, anywhere, makes all forget what they knew.
    CGroup* mAncestor = nullptr;
    uint64_t mNumCutsThen = UINT64_MAX;
    static inline uint64_t sNumCuts = 0; ///< links taken away so far
};

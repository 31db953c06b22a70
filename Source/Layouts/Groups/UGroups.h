// Operations on whole selections of groups.
#pragma once

#include <cstddef>
#include <unordered_set>
#include <vector>

class CCompositeGeometry;
class CGroup;
class CGroupsManager;
class CLayout;

/// Makes groups and turns trees of groups into lists of integers and back.
///
/// A list holds the number of groups, then for each group the index of its parent (below 0 for none), the number of its
/// elements and their indices, the number of its member groups and their indices; an empty list means no groups.
class UGroups {
public:
    UGroups() = delete;

    using tGroups = std::vector<CGroup*>;
    using tElements = std::vector<CCompositeGeometry*>;
    using Byte = unsigned char;

    /// A new group of at least two elements, owned by the layout; grouped elements join with all their groups.
    /// @return null for fewer elements
    static CGroup* NewGroupFromElementVector(CLayout* layout, const tElements& elements);
    /// Replaces `out` by the list form. Members that are not among `groups` and `elements` are left out.
    static void SerializeGroups(const tGroups& groups, const tElements& elements, std::vector<int>& out);
    /// Replaces `groups` (whose old groups are not deleted) by new groups made from a list, owned by the caller.
    /// Links are taken group by group: first the parent that it names, without a place in that one's list, then
    /// the members that it lists. Whatever a list claims, the result is a forest: indices out of range, elements
    /// grouped twice, links that contradict one made before or close a circle, and counts beyond the list are skipped
    /// with a warning. Linear in the list, whatever the depth.
    static void DeserializeGroups(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                  const std::vector<int>& list);
    /// The groups in list form as a block for the clipboard:
    /// the number of integers (int) and the integers, host byte order.
    /// @param size  receives the block's length
    /// @return the block; the caller releases it with delete[]
    static Byte* GroupVectorToRawMem(const tGroups& groups, const tElements& elements, size_t& size);
    /// DeserializeGroups from such a block, which is trusted to be whole.
    static void GroupVectorFromRawMem(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                      const Byte* block);
    /// The same for a block of `size` bytes from elsewhere. @return false, with nothing done, when it is too short for
    /// what it claims to hold
    static bool GroupVectorFromRawMem(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                      const Byte* block, size_t size);

    /// Dissolves the outermost groups of all selected elements: they leave the layout and are deleted, groups inside
    /// them become top-level.
    static void UngroupGroupsInSelection(CLayout* layout);
    /// Appends every group that holds one of the elements at any depth, each once, a group before those inside it.
    static void GetGroupsInElementVector(const CGroupsManager* manager, const tElements& elements, tGroups& groups);
    /// Groups `copies`, which correspond to `sources` one by one, as these are grouped. A group of which one
    /// element or group only is copied is not made: that one takes its place.
    /// @param groups  the new groups are appended; the caller owns them
    static void CloneGroupings(CGroupsManager* manager, const tElements& sources, const tElements& copies,
                               tGroups& groups);
    /// Takes elements out of their groups.
    /// @param emptied  receives the groups without members that this leaves; they have no parent any more and belong to
    ///                 whoever owned them
    static void RemoveElements(CGroupsManager* manager, const std::unordered_set<CCompositeGeometry*>& elements,
                               tGroups& emptied);
    /// @return the group's index, or -1
    static int GetGroupIndexInVector(const tGroups& groups, const CGroup* group);
};

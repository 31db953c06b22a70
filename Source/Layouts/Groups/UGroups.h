// Operations on whole selections of groups.
#pragma once

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

    /// A new group of at least two elements, owned by the layout; grouped elements join with all their groups.
    /// @return null for fewer elements
    static CGroup* NewGroupFromElementVector(CLayout* layout, const tElements& elements);
    /// Replaces `out` by the list form. Members that are not among `groups` and `elements` are left out.
    static void SerializeGroups(const tGroups& groups, const tElements& elements, std::vector<int>& out);
    /// Replaces `groups` (whose old groups are not deleted) by new groups made from a list, owned by the caller.
    /// Whatever a list claims, the result is a forest: indices out of range, elements grouped twice, second parents,
    /// groups inside themselves and counts beyond the list are skipped with a warning. Linear in the list, whatever the
    /// depth.
    static void DeserializeGroups(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                  const std::vector<int>& list);
    /// @return the group's index, or -1
    static int GetGroupIndexInVector(const tGroups& groups, const CGroup* group);
};

#include "Layouts/Groups/UGroups.h"

#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "KVURawMem/KVURawMem.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/CGroupsManager.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstdint>
#include <new>
#include <numeric>
#include <unordered_map>

namespace {
constexpr char kDeserialize[] = "static void UGroups::DeserializeGroups(CGroupsManager *, vector<CGroup *> &, "
                                "vector<CCompositeGeometry *> &, vector<int> &)";

/// Reads the list form and builds the groups in two passes.
class CGroupsReader {
public:
    CGroupsReader(CGroupsManager* manager, UGroups::tGroups& groups, const UGroups::tElements& elements,
                  const std::vector<int>& list)
        : mManager(manager), mGroups(groups), mElements(elements), mList(list)
    {}

    /// First pass: makes the groups with their elements and remembers what they claim of each other.
    void MakeGroups()
    {
        int64_t position = 0;
        const int count = Next(position);
        for (int i = 0; i < count && position < Size(); ++i) {
            const int parent = Next(position);
            CGroup* group = mManager->CreateGroup();
            mGroups.push_back(group);
            const tRange elements = NextRange(position);
            for (int64_t at = elements.begin; at < elements.end; ++at) {
                const int index = mList[static_cast<size_t>(at)];
                if (index < 0 || static_cast<size_t>(index) >= mElements.size()) {
                    ULog::Warn("%s: No element with index %d", kDeserialize, index);
                } else {
                    group->AddMember(mElements[static_cast<size_t>(index)]);
                }
            }
            mClaims.push_back({parent, NextRange(position)});
        }
        if (position != Size()) {
            ULog::Warn("%s: Expected index doesn't match size of deserialized groups (current: %d, expected: %d)",
                       kDeserialize, static_cast<int>(std::min<int64_t>(position, INT32_MAX)),
                       static_cast<int>(Size()));
        }
    }

    /// Second pass: a group enters the list of members that names it, unless it names another parent itself; one that
    /// only names its parent enters that one's list last.
    template <typename tAttach>
    void LinkGroups(tAttach attach)
    {
        mTree.resize(mGroups.size());
        std::iota(mTree.begin(), mTree.end(), size_t{0});
        mParents.assign(mGroups.size(), kNoParent);
        for (size_t group = 0; group < mGroups.size(); ++group) {
            tClaim& claim = mClaims[group];
            if (claim.parent >= 0 && (!IsGroup(claim.parent) || static_cast<size_t>(claim.parent) == group)) {
                ULog::Warn("%s: No parent group with index %d", kDeserialize, claim.parent);
                claim.parent = kNoParent;
            }
        }
        for (size_t group = 0; group < mGroups.size(); ++group) {
            const tRange members = mClaims[group].members;
            for (int64_t at = members.begin; at < members.end; ++at) {
                const int member = mList[static_cast<size_t>(at)];
                if (!IsGroup(member)) {
                    ULog::Warn("%s: No group with index %d", kDeserialize, member);
                    continue;
                }
                const int claimed = mClaims[static_cast<size_t>(member)].parent;
                if (claimed >= 0 && static_cast<size_t>(claimed) != group) {
                    ULog::Warn("%s: Parent group already assigned!", kDeserialize);
                    continue;
                }
                Link(group, static_cast<size_t>(member), attach);
            }
        }
        for (size_t group = 0; group < mGroups.size(); ++group) {
            if (mClaims[group].parent >= 0) {
                Link(static_cast<size_t>(mClaims[group].parent), group, attach);
            }
        }
    }

private:
    static constexpr int kNoParent = -1;
    struct tRange {
        int64_t begin;
        int64_t end;
    };
    struct tClaim {
        int parent;
        tRange members;
    };

    int64_t Size() const { return static_cast<int64_t>(mList.size()); }
    bool IsGroup(int index) const { return index >= 0 && static_cast<size_t>(index) < mGroups.size(); }

    /// The next integer; 0 behind the end, which counts as read.
    int Next(int64_t& position) const
    {
        const int value = position < Size() ? mList[static_cast<size_t>(position)] : 0;
        ++position;
        return value;
    }

    /// A count and as many places behind it as the list has.
    tRange NextRange(int64_t& position) const
    {
        const int64_t count = std::max(Next(position), 0);
        const tRange range = {std::min(position, Size()), std::min(position + count, Size())};
        position += count;
        return range;
    }

    size_t Root(size_t group)
    {
        while (mTree[group] != group) {
            mTree[group] = mTree[mTree[group]];
            group = mTree[group];
        }
        return group;
    }

    template <typename tAttach>
    void Link(size_t parent, size_t member, tAttach attach)
    {
        int64_t& known = mParents[member];
        if (known == static_cast<int64_t>(parent)) {
            return;
        }
        // A group without a parent is the root of its tree: it must not be that of the parent as well.
        if (known != kNoParent || Root(parent) == Root(member)) {
            ULog::Warn("%s: Group %d cannot be a member of group %d", kDeserialize, static_cast<int>(member),
                       static_cast<int>(parent));
            return;
        }
        mTree[Root(member)] = Root(parent);
        known = static_cast<int64_t>(parent);
        attach(mGroups[parent], mGroups[member]);
    }

    CGroupsManager* mManager;
    UGroups::tGroups& mGroups;
    const UGroups::tElements& mElements;
    const std::vector<int>& mList;
    std::vector<tClaim> mClaims;
    std::vector<size_t> mTree; ///< disjoint sets: the groups of one tree so far
    std::vector<int64_t> mParents;
};
} // namespace

CGroup* UGroups::NewGroupFromElementVector(CLayout* layout, const tElements& elements)
{
    static constexpr char kFunction[] =
        "static CGroup *UGroups::NewGroupFromElementVector(CLayout *, vector<CCompositeGeometry *> &)";
    if (elements.size() < 2) {
        ULog::Warn("%s: Not enough elements to create group (%d)", kFunction, static_cast<int>(elements.size()));
        return nullptr;
    }
    CGroup* group = layout->GetGroupsManager()->CreateGroup();
    CErr::CheckNull(group, kFunction, "Failed to create new group");
    layout->AddGroup(group);
    group->AddMembers(elements);
    return group;
}

void UGroups::SerializeGroups(const tGroups& groups, const tElements& elements, std::vector<int>& out)
{
    out.clear();
    if (groups.empty()) {
        return;
    }
    std::unordered_map<const CGroup*, int> groupIndex;
    BOOST_FOREACH(const CGroup* group, groups) {
        groupIndex.emplace(group, static_cast<int>(groupIndex.size()));
    }
    std::unordered_map<const CCompositeGeometry*, int> elementIndex;
    int next = 0;
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        elementIndex.emplace(element, next++);
    }
    const auto append = [&out](const auto& members, const auto& index) {
        const size_t countAt = out.size();
        out.push_back(0);
        for (const auto* member : members) {
            const auto found = index.find(member);
            if (found != index.end()) {
                out.push_back(found->second);
            }
        }
        out[countAt] = static_cast<int>(out.size() - countAt - 1);
    };
    out.push_back(static_cast<int>(groups.size()));
    BOOST_FOREACH(const CGroup* group, groups) {
        const auto parent = groupIndex.find(group->GetParentGroup());
        out.push_back(parent != groupIndex.end() ? parent->second : -1);
        append(group->GetMemberItemsVec(), elementIndex);
        append(group->GetMemberGroupsVec(), groupIndex);
    }
}

void UGroups::DeserializeGroups(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                const std::vector<int>& list)
{
    groups.clear();
    if (list.empty()) {
        return;
    }
    CGroupsReader reader(manager, groups, elements, list);
    reader.MakeGroups();
    reader.LinkGroups([](CGroup* parent, CGroup* member) { parent->Attach(member); });
}

UGroups::Byte* UGroups::GroupVectorToRawMem(const tGroups& groups, const tElements& elements, size_t& size)
{
    std::vector<int> list;
    SerializeGroups(groups, elements, list);
    const size_t needed = (list.size() + 1) * sizeof(int);
    Byte* block = new (std::nothrow) Byte[needed];
    CErr::CheckNull(block,
                    "static Byte *UGroups::GroupVectorToRawMem(vector<CGroup *> &, vector<CCompositeGeometry *> &, "
                    "size_t &)",
                    "Failed to alloc memory for clipboard data");
    void* cursor = KVURawMem::AppendDataToRawMem(static_cast<void*>(block), static_cast<int>(list.size()));
    for (const int entry : list) {
        cursor = KVURawMem::AppendDataToRawMem(cursor, entry);
    }
    size = needed;
    return block;
}

void UGroups::GroupVectorFromRawMem(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                    const Byte* block)
{
    int count = 0;
    const void* cursor = KVURawMem::FetchDataFromRawMem(static_cast<const void*>(block), count);
    std::vector<int> list;
    for (int i = 0; i < count; ++i) {
        int entry = 0;
        cursor = KVURawMem::FetchDataFromRawMem(cursor, entry);
        list.push_back(entry);
    }
    DeserializeGroups(manager, groups, elements, list);
}

bool UGroups::GroupVectorFromRawMem(CGroupsManager* manager, tGroups& groups, const tElements& elements,
                                    const Byte* block, size_t size)
{
    int count = 0;
    if (size < sizeof count) {
        return false;
    }
    KVURawMem::FetchDataFromRawMem(static_cast<const void*>(block), count);
    if (count < 0 || static_cast<size_t>(count) > size / sizeof(int) - 1) {
        return false;
    }
    GroupVectorFromRawMem(manager, groups, elements, block);
    return true;
}

void UGroups::UngroupGroupsInSelection(CLayout* layout)
{
    CGroupsManager* manager = layout->GetGroupsManager();
    tGroups roots;
    std::unordered_set<const CGroup*> known;
    BOOST_FOREACH(CCompositeGeometry* element, layout->GetElements()) {
        CGroup* root = element->IsSelected() ? manager->GetRootGroup(element) : nullptr;
        if (root != nullptr && known.insert(root).second) {
            roots.push_back(root);
        }
    }
    layout->RemoveGroupVec(roots);
    BOOST_FOREACH(CGroup* root, roots) {
        delete root;
    }
}

void UGroups::GetGroupsInElementVector(const CGroupsManager* manager, const tElements& elements, tGroups& groups)
{
    std::unordered_set<const CGroup*> known;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (!manager->IsInGroup(element)) {
            continue;
        }
        tGroups path;
        for (CGroup* group = manager->GetGroupForGeometry(element); group != nullptr && known.insert(group).second;
             group = group->GetParentGroup()) {
            path.push_back(group);
        }
        groups.insert(groups.end(), path.rbegin(), path.rend());
    }
}

void UGroups::CloneGroupings(CGroupsManager* manager, const tElements& sources, const tElements& copies,
                             tGroups& groups)
{
    std::unordered_map<const CCompositeGeometry*, CCompositeGeometry*> copyOf;
    for (size_t i = 0; i < sources.size() && i < copies.size(); ++i) {
        copyOf.emplace(sources[i], copies[i]);
    }
    tGroups originals;
    GetGroupsInElementVector(manager, sources, originals);
    std::unordered_map<const CGroup*, CGroup*> cloneOf;
    BOOST_FOREACH(const CGroup* original, originals) {
        CGroup* clone = manager->CreateGroup();
        cloneOf.emplace(original, clone);
        groups.push_back(clone);
        BOOST_FOREACH(CCompositeGeometry* item, original->GetMemberItemsVec()) {
            const auto copy = copyOf.find(item);
            if (copy != copyOf.end()) {
                clone->AddMember(copy->second);
            }
        }
    }
    // Members in the order of the original's list, of those that were cloned.
    BOOST_FOREACH(const CGroup* original, originals) {
        BOOST_FOREACH(const CGroup* member, original->GetMemberGroupsVec()) {
            const auto clone = cloneOf.find(member);
            if (clone != cloneOf.end()) {
                cloneOf[original]->Attach(clone->second);
            }
        }
    }
}

void UGroups::RemoveElements(CGroupsManager* manager, const std::unordered_set<CCompositeGeometry*>& elements,
                             tGroups& emptied)
{
    std::unordered_set<CGroup*> touched;
    for (CCompositeGeometry* element : elements) {
        if (manager->IsInGroup(element)) {
            touched.insert(manager->GetGroupForGeometry(element));
            manager->Ungroup(element);
        }
    }
    for (CGroup* group : touched) {
        std::vector<CCompositeGeometry*>& items = group->mItems;
        items.erase(std::remove_if(items.begin(), items.end(),
                                   [&elements](CCompositeGeometry* item) { return elements.count(item) != 0; }),
                    items.end());
    }
    std::unordered_set<const CGroup*> left;
    for (CGroup* group : touched) {
        while (group != nullptr && group->IsEmpty() && left.insert(group).second) {
            CGroup* holder = group->mHolder;
            emptied.push_back(group);
            if (holder != nullptr) {
                holder->Detach(group);
            }
            group->ClearParentGroup();
            group = holder;
        }
    }
}

int UGroups::GetGroupIndexInVector(const tGroups& groups, const CGroup* group)
{
    const auto found = std::find(groups.begin(), groups.end(), group);
    return found == groups.end() ? -1 : static_cast<int>(found - groups.begin());
}

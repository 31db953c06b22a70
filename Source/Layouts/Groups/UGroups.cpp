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
#include <unordered_map>

namespace {
constexpr char kDeserialize[] = "static void UGroups::DeserializeGroups(CGroupsManager *, vector<CGroup *> &, "
                                "vector<CCompositeGeometry *> &, vector<int> &)";

CGroup* MakeGroup(CGroupsManager* manager, const char* function)
{
    CGroup* group = manager->CreateGroup();
    CErr::CheckNull(group, function, "Failed to create new group");
    return group;
}

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
        int i = 0;
        for (; i < count && position < Size(); ++i) {
            const int parent = Next(position);
            CGroup* group = MakeGroup(mManager, kDeserialize);
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
        position += kSmallestEntry * std::max(count - i, 0); // of the groups that are not there
        if (position != Size()) {
            ULog::Warn("%s: Expected index doesn't match size of deserialized groups (current: %d, expected: %d)",
                       kDeserialize, static_cast<int>(std::min<int64_t>(position, INT32_MAX)),
                       static_cast<int>(Size()));
        }
    }

    /// Second pass: group by group, the parent that it names, then the members that it lists. What contradicts a link
    /// made before is refused by the groups.
    void LinkGroups()
    {
        for (size_t i = 0; i < mGroups.size(); ++i) {
            const auto [parent, members] = mClaims[i];
            if (parent >= 0) {
                if (CGroup* group = GroupAt(parent)) {
                    mGroups[i]->SetParentGroup(group);
                }
            }
            for (int64_t at = members.begin; at < members.end; ++at) {
                if (CGroup* group = GroupAt(mList[static_cast<size_t>(at)])) {
                    mGroups[i]->AddMember(group);
                }
            }
        }
    }

private:
    static constexpr int64_t kSmallestEntry = 3; ///< parent and two counts
    struct tRange {
        int64_t begin;
        int64_t end;
    };
    struct tClaim {
        int parent;
        tRange members;
    };

    int64_t Size() const { return static_cast<int64_t>(mList.size()); }

    /// Null, with a warning, for an index outside the list.
    CGroup* GroupAt(int index) const
    {
        if (index < 0 || static_cast<size_t>(index) >= mGroups.size()) {
            ULog::Warn("%s: No group with index %d", kDeserialize, index);
            return nullptr;
        }
        return mGroups[static_cast<size_t>(index)];
    }

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

    CGroupsManager* mManager;
    UGroups::tGroups& mGroups;
    const UGroups::tElements& mElements;
    const std::vector<int>& mList;
    std::vector<tClaim> mClaims;
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
    CGroup* group = MakeGroup(layout->GetGroupsManager(), kFunction);
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
    reader.LinkGroups();
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
    static constexpr char kFunction[] = "static void UGroups::CloneGroupings(CGroupsManager *, "
                                        "vector<CCompositeGeometry *> &, vector<CCompositeGeometry *> &, "
                                        "vector<CGroup *> &)";
    std::unordered_map<const CCompositeGeometry*, CCompositeGeometry*> copyOf;
    for (size_t i = 0; i < sources.size() && i < copies.size(); ++i) {
        copyOf.emplace(sources[i], copies[i]);
    }
    tGroups originals;
    GetGroupsInElementVector(manager, sources, originals);
    // From the inside out, so that what is left of the groups inside is known. Where that is one thing only, it stands
    // for its group in the one around.
    struct tThing {
        CCompositeGeometry* element;
        CGroup* group;
    };
    std::unordered_map<const CGroup*, tThing> thingOf;
    tGroups clones;
    for (size_t i = originals.size(); i-- > 0;) {
        std::vector<tThing> things;
        BOOST_FOREACH(CCompositeGeometry* item, originals[i]->mItems) {
            const auto copy = copyOf.find(item);
            if (copy != copyOf.end()) {
                things.push_back({copy->second, nullptr});
            }
        }
        for (const CGroup* child : originals[i]->mChildren) {
            const auto thing = thingOf.find(child);
            if (thing != thingOf.end()) {
                things.push_back(thing->second);
            }
        }
        if (things.size() > 1) {
            CGroup* clone = MakeGroup(manager, kFunction);
            for (const tThing& thing : things) {
                thing.group != nullptr ? clone->AddMember(thing.group) : clone->AddMember(thing.element);
            }
            clones.push_back(clone);
            things = {{nullptr, clone}};
        }
        if (!things.empty()) {
            thingOf.emplace(originals[i], things.front());
        }
    }
    groups.insert(groups.end(), clones.rbegin(), clones.rend());
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
            CGroup* parent = group->GetParentGroup();
            emptied.push_back(group);
            group->ClearParentGroup();
            group = parent;
        }
    }
}

int UGroups::GetGroupIndexInVector(const tGroups& groups, const CGroup* group)
{
    const auto found = std::find(groups.begin(), groups.end(), group);
    return found == groups.end() ? -1 : static_cast<int>(found - groups.begin());
}

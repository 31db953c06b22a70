// The layout's list operations, and the links of its groups, against a plain model in random order.
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutJointsManager.h"
#include "Layouts/CLayoutStatistics.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/UGroups.h"
#include "support/DocumentBuilder.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace {
using tElements = std::vector<CCompositeGeometry*>;
using tGroups = std::vector<CGroup*>;
constexpr double kLength = 100.0;

/// A straight of one of a few articles, at a place on a line where neighbours meet.
CCompositeGeometry* MakeStraight(int article, int place)
{
    auto straight = std::make_unique<CStraightBIG>();
    straight->SpecifyStraightGeometry(0.0, 0.0, kLength, 0.0, 16.5, 30.0, true, true);
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(straight.release());
    element->SetName(("A" + std::to_string(article)).c_str());
    element->SetRailSetName("Some Library");
    element->SetPosition(kLength * place, 0.0);
    return element.release();
}

/// Places of some things in a list of all.
template <typename tThing>
std::vector<int> IndicesOf(const std::vector<tThing*>& some, const std::vector<tThing*>& all)
{
    std::vector<int> indices;
    for (const tThing* thing : some) {
        indices.push_back(static_cast<int>(std::find(all.begin(), all.end(), thing) - all.begin()));
    }
    return indices;
}

/// What the layout should hold.
class CModel {
public:
    struct tGroup {
        CGroup* parent = nullptr;
        tElements items = {};
        tGroups members = {};
    };

    void AddElement(CGroup* group, CCompositeGeometry* element)
    {
        if (holders.emplace(element, group).second) {
            groups[group].items.push_back(element);
        }
    }
    void SetParent(CGroup* group, CGroup* parent)
    {
        if (groups[group].parent == nullptr && Root(parent) != group) {
            groups[group].parent = parent;
        }
    }
    void AddMember(CGroup* group, CGroup* sub)
    {
        SetParent(sub, group);
        tGroups& members = groups[group].members;
        if (groups[sub].parent == group && std::find(members.begin(), members.end(), sub) == members.end()) {
            members.push_back(sub);
        }
    }
    void ClearParent(CGroup* group)
    {
        if (CGroup* parent = std::exchange(groups[group].parent, nullptr)) {
            std::erase(groups[parent].members, group);
        }
    }
    void DeleteGroup(CGroup* group)
    {
        ClearParent(group);
        groups.erase(group);
        for (auto& [other, entry] : groups) {
            entry.parent = entry.parent == group ? nullptr : entry.parent;
        }
        std::erase_if(holders, [group](const auto& holder) { return holder.second == group; });
    }
    /// With the groups that it leaves empty.
    void DeleteElement(CCompositeGeometry* element)
    {
        std::erase(elements, element);
        articles.erase(element);
        CGroup* group = std::exchange(holders[element], nullptr);
        holders.erase(element);
        if (group != nullptr) {
            std::erase(groups[group].items, element);
        }
        const auto isChild = [&group](const auto& other) { return other.second.parent == group; };
        while (group != nullptr && groups[group].items.empty() && std::none_of(groups.begin(), groups.end(), isChild)) {
            CGroup* parent = groups[group].parent;
            DeleteGroup(group);
            group = parent;
        }
    }
    /// The groups of the layout as a list has them.
    std::vector<tGroupEntry> Claims(const tGroups& list) const
    {
        std::vector<tGroupEntry> claims;
        for (CGroup* group : list) {
            const tGroup& entry = groups.at(group);
            claims.push_back({entry.parent == nullptr ? -1 : IndicesOf({entry.parent}, list)[0],
                              IndicesOf(entry.items, elements), IndicesOf(entry.members, list)});
        }
        return claims;
    }
    /// Makes the groups that a list claims.
    void Read(const std::vector<tGroupEntry>& claims, const tGroups& made)
    {
        groups.clear();
        holders.clear();
        for (size_t i = 0; i < claims.size(); ++i) {
            groups[made[i]];
            for (const int element : claims[i].elements) {
                AddElement(made[i], elements[element]);
            }
        }
        for (size_t i = 0; i < claims.size(); ++i) {
            if (claims[i].parent >= 0) {
                SetParent(made[i], made[claims[i].parent]);
            }
            for (const int group : claims[i].groups) {
                AddMember(made[i], made[group]);
            }
        }
    }
    CGroup* Root(CGroup* group) const
    {
        CGroup* parent = groups.at(group).parent;
        return parent == nullptr ? group : Root(parent);
    }

    tElements elements;
    std::map<CCompositeGeometry*, std::string> articles;
    std::map<CGroup*, tGroup> groups;
    std::map<CCompositeGeometry*, CGroup*> holders; ///< which group the registry has
};

void ExpectSameGroups(CLayout& layout, const CModel& model)
{
    const CGroupsManager& manager = *layout.GetGroupsManager();
    ASSERT_EQ(manager.GetGroups(), std::set<CGroup*>(layout.GetGroups().begin(), layout.GetGroups().end()));
    ASSERT_EQ(layout.GetGroups().size(), model.groups.size());
    for (CGroup* group : layout.GetGroups()) {
        const CModel::tGroup& expected = model.groups.at(group);
        ASSERT_EQ(group->GetParentGroup(), expected.parent);
        ASSERT_EQ(group->GetMemberItemsVec(), expected.items);
        ASSERT_EQ(group->GetMemberGroupsVec(), expected.members);
        ASSERT_EQ(group->GetRootGroup(), model.Root(group));
        for (CGroup* member : expected.members) {
            for (CGroup* inside : model.groups.at(member).members) {
                ASSERT_TRUE(group->IsMember(inside) && !inside->IsMember(group));
            }
        }
    }
    for (CCompositeGeometry* element : model.elements) {
        const auto holder = model.holders.find(element);
        ASSERT_EQ(manager.IsInGroup(element), holder != model.holders.end());
        ASSERT_TRUE(holder == model.holders.end() || manager.GetGroupForGeometry(element) == holder->second);
    }
}

void ExpectSame(CLayout& layout, const CModel& model, bool connected)
{
    ASSERT_EQ(layout.GetElements(), model.elements);
    std::map<std::string, int> counts;
    for (const auto& [element, article] : model.articles) {
        ++counts[article];
    }
    std::vector<CCountedCIG*> usage;
    layout.GetStatistics()->GetLibraryElementUsageStatistics(usage, false);
    ASSERT_EQ(usage.size(), counts.size());
    for (const CCountedCIG* entry : usage) {
        ASSERT_EQ(entry->GetCount(), counts[entry->GetName()]) << entry->GetName();
        ASSERT_EQ(layout.GetStatistics()->FindUsage(entry->GetName()), entry);
        ASSERT_EQ(layout.GetStatistics()->GetItemUsage("any library", entry->GetName()), entry->GetCount());
    }
    ExpectSameGroups(layout, model);
    std::vector<CJoint*> joints;
    for (CCompositeGeometry* element : model.elements) {
        element->GetJoints(joints, true, false);
        for (const CJoint* joint : joints) {
            ASSERT_EQ(joint->IsActive(), joint->GetPartner() == nullptr);
            if (joint->GetPartner() != nullptr) {
                ASSERT_EQ(joint->GetPartner()->GetPartner(), joint);
                ASSERT_TRUE(connected && model.articles.count(joint->GetPartner()->GetOwner()) != 0);
            }
        }
    }
    CLayoutJointsManager* manager = CLayoutJointsManager::Instance();
    ASSERT_EQ(manager->IsEmpty(), !connected || model.elements.empty());
    joints.clear();
    manager->FindAllJointsCloseToPoint(CPoint(0.0, 16.5, 0.0), joints); // looks at every registered joint
    for (const CJoint* joint : joints) {
        ASSERT_TRUE(model.articles.count(joint->GetOwner()));
    }
}
} // namespace

TEST(CLayoutLists, AnySequenceOfOperationsKeepsListsGroupsStatisticsAndJointsConsistent)
{
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        CRandom random(seed);
        const auto below = [&random](size_t n) { return static_cast<size_t>(random.Below(static_cast<int>(n))); };
        const auto index = [&below](size_t n) { return static_cast<int>(below(n)); };
        CLayout layout;
        CModel model;
        const bool connected = seed % 2 == 0;
        if (connected) {
            layout.ConnectJoints();
        }
        for (int step = 0; step < 200; ++step) {
            tElements some;
            std::copy_if(model.elements.begin(), model.elements.end(), std::back_inserter(some),
                         [&](CCompositeGeometry*) { return below(4) == 0; });
            CCompositeGeometry* any = model.elements.empty() ? nullptr : model.elements[below(model.elements.size())];
            const tGroups& all = layout.GetGroups();
            CGroup* group = all.empty() ? nullptr : all[below(all.size())];
            CGroup* other = all.empty() ? nullptr : all[below(all.size())];
            switch (any == nullptr ? 0 : below(group == nullptr ? 8 : 16)) {
            case 0: // a few new ones, or one
            case 1: {
                tElements fresh;
                for (size_t i = below(6) + 1; i > 0; --i) {
                    const int article = index(5);
                    fresh.push_back(MakeStraight(article, index(12)));
                    model.elements.push_back(fresh.back());
                    model.articles[fresh.back()] = "A" + std::to_string(article);
                }
                if (fresh.size() > 1) {
                    layout.InsertItemVec(fresh, true, true);
                    ASSERT_TRUE(fresh.back()->IsSelected());
                } else {
                    layout.AddItem(fresh[0]);
                }
                break;
            }
            case 2:
                model.DeleteElement(any);
                ASSERT_TRUE(layout.RemoveItem(any));
                ASSERT_FALSE(layout.DeleteItem(any));
                delete any;
                break;
            case 3:
                std::for_each(some.begin(), some.end(),
                              [&](CCompositeGeometry* element) { model.DeleteElement(element); });
                layout.DeleteItemVec(some);
                ASSERT_TRUE(some.empty());
                break;
            case 4: {
                const size_t place = below(model.elements.size() + 2);
                std::erase(model.elements, any);
                model.elements.insert(model.elements.begin() + std::min<long>(place, model.elements.size()), any);
                ASSERT_TRUE(layout.MoveItemToIndex(any, static_cast<int>(place)));
                break;
            }
            case 5:
                if (CGroup* made = UGroups::NewGroupFromElementVector(&layout, some)) {
                    model.groups[made];
                    for (CCompositeGeometry* element : some) {
                        if (model.holders.count(element) == 0) {
                            model.AddElement(made, element);
                        } else {
                            model.AddMember(made, model.Root(model.holders[element]));
                        }
                    }
                }
                break;
            case 6: {
                std::set<CGroup*> roots;
                std::for_each(model.elements.begin(), model.elements.end(),
                              [](CCompositeGeometry* e) { e->Unselect(); });
                for (CCompositeGeometry* element : some) {
                    element->Select();
                    if (model.holders.count(element) != 0) {
                        roots.insert(model.Root(model.holders[element]));
                    }
                }
                std::for_each(roots.begin(), roots.end(), [&model](CGroup* root) { model.DeleteGroup(root); });
                UGroups::UngroupGroupsInSelection(&layout);
                break;
            }
            case 7: { // to a backup and back: the same in new elements, or with groups that contradict each other
                std::vector<tGroupEntry> claims = model.Claims(all);
                tElements copies;
                std::vector<int> list;
                layout.BackupGroupAndItemVec(copies, list);
                ASSERT_EQ(list, GroupList(claims));
                if (random.Bool()) {
                    claims.assign(below(8) + 1, {});
                    for (tGroupEntry& claim : claims) {
                        claim.parent = index(claims.size() + 1) - 1;
                        for (size_t i = below(4); i > 0; --i) {
                            claim.elements.push_back(index(copies.size()));
                            claim.groups.push_back(index(claims.size()));
                        }
                    }
                }
                std::map<CCompositeGeometry*, std::string> articles;
                for (size_t i = 0; i < copies.size(); ++i) {
                    articles[copies[i]] = model.articles[model.elements[i]];
                }
                model.articles = articles;
                model.elements = copies;
                layout.RestoreGroupAndItemVec(copies, GroupList(claims));
                ASSERT_TRUE(copies.empty());
                ASSERT_EQ(all.size(), claims.size());
                model.Read(claims, all);
                break;
            }
            default: { // links between groups, there and in the model
                const std::pair<std::function<void()>, std::function<void()>> links[] = {
                    {[&] { group->SetParentGroup(other); }, [&] { model.SetParent(group, other); }},
                    {[&] { group->AddMember(other); }, [&] { model.AddMember(group, other); }},
                    {[&] { group->RemoveMember(other); }, [&] { std::erase(model.groups[group].members, other); }},
                    {[&] { group->AddMember(any); }, [&] { model.AddElement(group, any); }},
                    {[&] { group->RemoveMember(any); }, [&] { std::erase(model.groups[group].items, any); }},
                    {[&] { group->ClearParentGroup(); }, [&] { model.ClearParent(group); }},
                    {[&] { layout.RemoveGroup(group), delete group; }, [&] { model.DeleteGroup(group); }}};
                const auto& [link, same] = links[below(std::size(links))];
                link();
                same();
            }
            }
            ExpectSame(layout, model, connected);
            if (HasFatalFailure()) {
                FAIL() << "step " << step;
            }
        }
        layout.DisconnectJoints();
        ExpectSame(layout, model, false);
    }
}

TEST(CLayoutLists, NeighboursConnectWhenJointsAreConnectedAndLetGoWhenOneLeaves)
{
    CLayout layout;
    layout.AddItem(MakeStraight(1, 0));
    layout.AddItem(MakeStraight(1, 1));
    const CLayoutJointsManager* manager = CLayoutJointsManager::Instance();
    layout.ConnectJoints();
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 2);
    layout.AddItem(MakeStraight(1, 2));
    CLayoutJointsManager::SnapCloseJoints();
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 4);
    ASSERT_TRUE(layout.DeleteItem(layout.GetElements()[1]));
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 0);
    tElements fresh = {MakeStraight(1, 1)};
    layout.InsertItemVec(fresh, false, true);
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 4);
}

TEST(UGroups, CopiesAndClipboardKeepTheGroupingOfWhatIsCopied)
{
    CLayout layout;
    CLayout other;
    for (int i = 0; i < 6; ++i) {
        layout.AddItem(MakeStraight(i, i));
    }
    const tElements all = layout.GetElements();
    CGroup* inner = UGroups::NewGroupFromElementVector(&layout, {all[0], all[1]});
    UGroups::NewGroupFromElementVector(&layout, {all[3], all[4]});
    CGroup* outer = UGroups::NewGroupFromElementVector(&layout, {all[1], all[2], all[3]});
    tGroups found;
    UGroups::GetGroupsInElementVector(layout.GetGroupsManager(), {all[5], all[1]}, found);
    EXPECT_EQ(found, (tGroups{outer, inner}));
    tElements items;
    outer->GetAllMemberItems(items);
    EXPECT_EQ(items, (tElements{all[2], all[0], all[1], all[3], all[4]}));

    // What is copied is grouped as far as there are two things to group.
    const std::pair<tElements, std::vector<int>> cases[] = {
        {{all[0]}, {}},
        {{all[0], all[5]}, {}},
        {{all[0], all[2]}, {1, -1, 2, 1, 0, 0}},
        {{all[0], all[1]}, {1, -1, 2, 0, 1, 0}},
        {{all[2], all[1], all[0]}, {2, -1, 1, 0, 1, 1, 0, 2, 2, 1, 0}}};
    for (const auto& [sources, expected] : cases) {
        other.ClearItemVec();
        other.ClearGroupVec();
        std::for_each(sources.begin(), sources.end(), [&](auto*) { other.AddItem(MakeStraight(0, 0)); });
        tGroups clones;
        UGroups::CloneGroupings(layout.GetGroupsManager(), sources, other.GetElements(), clones);
        std::vector<int> list;
        UGroups::SerializeGroups(clones, other.GetElements(), list);
        EXPECT_EQ(list, expected);
        other.AddGroupVec(clones);
    }

    size_t size = 0;
    const std::unique_ptr<UGroups::Byte[]> block(UGroups::GroupVectorToRawMem(layout.GetGroups(), all, size));
    const int expected[] = {17, 3, 2, 2, 0, 1, 0, 2, 2, 3, 4, 0, -1, 1, 2, 2, 0, 1};
    ASSERT_EQ(size, sizeof expected);
    EXPECT_EQ(std::memcmp(block.get(), expected, size), 0);
    CGroupsManager manager;
    for (size_t cut = 0; cut <= size; ++cut) { // as a whole or not at all; elements that are missing are left out
        tGroups groups;
        EXPECT_EQ(UGroups::GroupVectorFromRawMem(&manager, groups, {all[0]}, block.get(), cut), cut == size);
        EXPECT_EQ(groups.size(), cut == size ? 3u : 0u);
        EXPECT_EQ(manager.IsInGroup(all[0]), cut == size);
        std::for_each(groups.begin(), groups.end(), [](CGroup* group) { delete group; });
    }
}

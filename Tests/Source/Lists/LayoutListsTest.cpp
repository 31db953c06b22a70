// The layout's list operations against a plain model, in random order.
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutJointsManager.h"
#include "Layouts/CLayoutStatistics.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/UGroups.h"
#include "support/DocumentBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>

namespace {
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

/// What the layout should hold: elements in list order with their articles, and its groups.
class CModel {
public:
    using tElements = std::vector<CCompositeGeometry*>;
    struct tGroup {
        CGroup* parent = nullptr;
        tElements items = {};
        std::vector<CGroup*> members = {};
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
        std::vector<CGroup*>& members = groups[group].members;
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
    void DeleteElements(const tElements& doomed)
    {
        for (CCompositeGeometry* element : doomed) {
            std::erase(elements, element);
            articles.erase(element);
            CGroup* group = holders.count(element) != 0 ? holders[element] : nullptr;
            if (group != nullptr) {
                std::erase(groups[group].items, element);
            }
            holders.erase(element);
            while (group != nullptr && groups[group].items.empty() &&
                   std::none_of(groups.begin(), groups.end(),
                                [group](const auto& other) { return other.second.parent == group; })) {
                CGroup* parent = groups[group].parent;
                DeleteGroup(group);
                group = parent;
            }
        }
    }
    /// Makes the groups that a list's entries claim.
    void Read(const std::vector<tGroupEntry>& claims, const std::vector<CGroup*>& made)
    {
        groups.clear();
        holders.clear();
        for (size_t i = 0; i < claims.size(); ++i) {
            groups[made[i]];
            for (const int element : claims[i].elements) {
                if (element >= 0 && element < static_cast<int>(elements.size())) {
                    AddElement(made[i], elements[element]);
                }
            }
        }
        const auto isGroup = [&made](int index) { return index >= 0 && index < static_cast<int>(made.size()); };
        for (size_t i = 0; i < claims.size(); ++i) {
            if (isGroup(claims[i].parent)) {
                SetParent(made[i], made[claims[i].parent]);
            }
            for (const int group : claims[i].groups) {
                if (isGroup(group)) {
                    AddMember(made[i], made[group]);
                }
            }
        }
    }
    CGroup* Root(CGroup* group) const
    {
        CGroup* parent = groups.at(group).parent;
        return parent == nullptr ? group : Root(parent);
    }
    tElements AllItems(CGroup* group) const
    {
        tElements all = groups.at(group).items;
        for (CGroup* member : groups.at(group).members) {
            const tElements inside = AllItems(member);
            all.insert(all.end(), inside.begin(), inside.end());
        }
        return all;
    }

    tElements elements;
    std::map<CCompositeGeometry*, std::string> articles;
    std::map<CGroup*, tGroup> groups;
    std::map<CCompositeGeometry*, CGroup*> holders; ///< which group the registry has
};

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
        CModel::tElements all;
        group->GetAllMemberItems(all);
        ASSERT_EQ(all, model.AllItems(group));
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
    }
    ExpectSameGroups(layout, model);
    std::vector<CJoint*> joints;
    for (CCompositeGeometry* element : model.elements) {
        element->GetJoints(joints, true, false);
        for (const CJoint* joint : joints) {
            ASSERT_EQ(joint->IsActive(), joint->GetPartner() == nullptr);
            if (joint->GetPartner() != nullptr) {
                ASSERT_EQ(joint->GetPartner()->GetPartner(), joint);
                ASSERT_TRUE(connected);
                ASSERT_TRUE(model.articles.count(joint->GetPartner()->GetOwner()));
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
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](size_t n) { return static_cast<int>(random() % std::max<size_t>(n, 1)); };
        CLayout layout;
        CModel model;
        bool connected = seed % 2 == 0;
        const auto someElements = [&] {
            CModel::tElements some;
            for (CCompositeGeometry* element : model.elements) {
                if (below(4) == 0) {
                    some.push_back(element);
                }
            }
            return some;
        };
        if (connected) {
            layout.ConnectJoints();
        }
        for (int step = 0; step < 200; ++step) {
            CCompositeGeometry* any = model.elements.empty() ? nullptr : model.elements[below(model.elements.size())];
            const auto anyGroup = [&] { return layout.GetGroups()[below(layout.GetGroups().size())]; };
            switch (any == nullptr ? 0 : below(layout.GetGroups().empty() ? 8 : 15)) {
            case 0: { // insert a few
                CModel::tElements fresh;
                for (int i = 1 + below(6); i > 0; --i) {
                    const int article = below(5);
                    fresh.push_back(MakeStraight(article, below(12)));
                    model.elements.push_back(fresh.back());
                    model.articles[fresh.back()] = "A" + std::to_string(article);
                }
                layout.InsertItemVec(fresh, true, true);
                ASSERT_TRUE(fresh.back()->IsSelected());
                break;
            }
            case 1:
                model.articles[model.elements.emplace_back(MakeStraight(1, below(12)))] = "A1";
                layout.AddItem(model.elements.back());
                break;
            case 2:
                model.DeleteElements({any});
                ASSERT_TRUE(layout.RemoveItem(any));
                ASSERT_FALSE(layout.DeleteItem(any));
                delete any;
                break;
            case 3: {
                CModel::tElements doomed = someElements();
                model.DeleteElements(doomed);
                layout.DeleteItemVec(doomed);
                ASSERT_TRUE(doomed.empty());
                break;
            }
            case 4: {
                const int index = below(model.elements.size() + 2);
                std::erase(model.elements, any);
                model.elements.insert(
                    model.elements.begin() + std::min<long>(index, static_cast<long>(model.elements.size())), any);
                ASSERT_TRUE(layout.MoveItemToIndex(any, index));
                break;
            }
            case 5: {
                const CModel::tElements some = someElements();
                if (CGroup* group = UGroups::NewGroupFromElementVector(&layout, some)) {
                    model.groups[group];
                    for (CCompositeGeometry* element : some) {
                        if (model.holders.count(element) == 0) {
                            model.AddElement(group, element);
                        } else {
                            model.AddMember(group, model.Root(model.holders[element]));
                        }
                    }
                }
                break;
            }
            case 6: {
                std::set<CGroup*> roots;
                for (CCompositeGeometry* element : model.elements) {
                    below(4) == 0 ? element->Select() : element->Unselect();
                    if (element->IsSelected() && model.holders.count(element) != 0) {
                        roots.insert(model.Root(model.holders[element]));
                    }
                }
                for (CGroup* root : roots) {
                    model.DeleteGroup(root);
                }
                UGroups::UngroupGroupsInSelection(&layout);
                break;
            }
            case 7: { // to a backup and back: the same content in new elements, or in groups that contradict each other
                std::vector<tGroupEntry> claims;
                for (CGroup* group : layout.GetGroups()) {
                    const CModel::tGroup& entry = model.groups[group];
                    claims.push_back({entry.parent == nullptr ? -1 : IndicesOf({entry.parent}, layout.GetGroups())[0],
                                      IndicesOf(entry.items, model.elements),
                                      IndicesOf(entry.members, layout.GetGroups())});
                }
                CModel::tElements copies;
                std::vector<int> list;
                layout.BackupGroupAndItemVec(copies, list);
                ASSERT_EQ(list, GroupList(claims));
                if (below(2) == 0) {
                    claims.resize(1 + below(8));
                    const auto index = [&](size_t n) { return below(n + 3) - 1; };
                    for (tGroupEntry& claim : claims) {
                        claim.parent = index(claims.size());
                        for (int i = below(4); i > 0; --i) {
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
                ASSERT_EQ(layout.GetGroups().size(), claims.size());
                model.Read(claims, layout.GetGroups());
                break;
            }
            case 8:
            case 9: {
                CGroup* group = anyGroup();
                CGroup* parent = anyGroup();
                group->SetParentGroup(parent);
                model.SetParent(group, parent);
                break;
            }
            case 10: {
                CGroup* group = anyGroup();
                CGroup* sub = anyGroup();
                group->AddMember(sub);
                model.AddMember(group, sub);
                break;
            }
            case 11: {
                CGroup* group = anyGroup();
                CGroup* sub = anyGroup();
                group->RemoveMember(sub);
                std::erase(model.groups[group].members, sub);
                break;
            }
            case 12: {
                CGroup* group = anyGroup();
                group->AddMember(any);
                model.AddElement(group, any);
                group = anyGroup();
                group->RemoveMember(any);
                std::erase(model.groups[group].items, any);
                break;
            }
            case 13: {
                CGroup* group = anyGroup();
                group->ClearParentGroup();
                model.ClearParent(group);
                break;
            }
            default: {
                CGroup* group = anyGroup();
                layout.RemoveGroup(group);
                delete group;
                model.DeleteGroup(group);
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
    EXPECT_TRUE(CLayoutJointsManager::Instance()->IsEmpty());
}

TEST(CLayoutLists, NeighboursConnectWhenJointsAreConnectedAndLetGoWhenOneLeaves)
{
    CLayout layout;
    for (int i = 0; i < 2; ++i) {
        layout.AddItem(MakeStraight(1, i));
    }
    CLayoutJointsManager* manager = CLayoutJointsManager::Instance();
    EXPECT_TRUE(manager->IsEmpty());
    layout.ConnectJoints();
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 2);
    layout.AddItem(MakeStraight(1, 2));
    CLayoutJointsManager::SnapCloseJoints();
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 4);
    CCompositeGeometry* last = layout.GetElements().back();
    ASSERT_TRUE(layout.DeleteItem(layout.GetElements()[1]));
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 0);
    std::vector<CCompositeGeometry*> fresh = {MakeStraight(1, 1)};
    layout.InsertItemVec(fresh, false, true);
    EXPECT_EQ(manager->GetNumberOfSnappedJoints(), 4);
    EXPECT_EQ(last->GetBIGAtIndex(0)->GetJointConnection(0)->GetOwner(), fresh[0]);
    layout.ClearItemVec();
    EXPECT_TRUE(manager->IsEmpty());
}

TEST(UGroups, CopiesAndClipboardKeepTheGroupingOfWhatIsCopied)
{
    CLayout layout;
    for (int i = 0; i < 6; ++i) {
        layout.AddItem(MakeStraight(i, i));
    }
    const std::vector<CCompositeGeometry*> all = layout.GetElements();
    CGroup* inner = UGroups::NewGroupFromElementVector(&layout, {all[0], all[1]});
    CGroup* outer = UGroups::NewGroupFromElementVector(&layout, {all[1], all[2]});
    EXPECT_EQ(UGroups::NewGroupFromElementVector(&layout, {all[4]}), nullptr);
    ASSERT_EQ(inner->GetParentGroup(), outer);
    EXPECT_EQ(UGroups::GetGroupIndexInVector(layout.GetGroups(), outer), 1);

    std::vector<CGroup*> found;
    UGroups::GetGroupsInElementVector(layout.GetGroupsManager(), {all[5], all[1]}, found);
    EXPECT_EQ(found, (std::vector<CGroup*>{outer, inner}));

    CLayout other;
    for (int i = 0; i < 2; ++i) {
        other.AddItem(MakeStraight(i, i));
    }
    // What is copied out of the groups is grouped as far as there are two things to group.
    const struct {
        std::vector<CCompositeGeometry*> sources;
        std::vector<int> list;
    } cases[] = {{{all[0]}, {}},
                 {{all[0], all[5]}, {}},
                 {{all[0], all[2]}, {1, -1, 2, 1, 0, 0}},
                 {{all[0], all[1]}, {1, -1, 2, 0, 1, 0}},
                 {{all[2], all[1], all[0]}, {2, -1, 1, 0, 1, 1, 0, 2, 2, 1, 0}}};
    for (const auto& c : cases) {
        CLayout target;
        for (size_t i = 0; i < c.sources.size(); ++i) {
            target.AddItem(MakeStraight(0, 0));
        }
        std::vector<CGroup*> clones;
        UGroups::CloneGroupings(layout.GetGroupsManager(), c.sources, target.GetElements(), clones);
        std::vector<int> list;
        UGroups::SerializeGroups(clones, target.GetElements(), list);
        EXPECT_EQ(list, c.list);
        target.AddGroupVec(clones);
    }

    size_t size = 0;
    const std::unique_ptr<UGroups::Byte[]> block(UGroups::GroupVectorToRawMem(layout.GetGroups(), all, size));
    const int expected[] = {11, 2, 1, 2, 0, 1, 0, -1, 1, 2, 1, 0};
    ASSERT_EQ(size, sizeof expected);
    EXPECT_EQ(std::memcmp(block.get(), expected, size), 0);
    for (size_t cut = 0; cut < size; ++cut) {
        std::vector<CGroup*> groups;
        EXPECT_FALSE(
            UGroups::GroupVectorFromRawMem(other.GetGroupsManager(), groups, other.GetElements(), block.get(), cut));
        EXPECT_TRUE(groups.empty());
    }
    // Pasted among fewer elements, what refers to the missing ones is left out.
    std::vector<CGroup*> groups;
    ASSERT_TRUE(
        UGroups::GroupVectorFromRawMem(other.GetGroupsManager(), groups, other.GetElements(), block.get(), size));
    ASSERT_EQ(groups.size(), 2u);
    other.AddGroupVec(groups);
    EXPECT_EQ(groups[0]->GetMemberItemsVec(), other.GetElements());
    EXPECT_EQ(groups[1]->GetMemberGroupsVec(), (std::vector<CGroup*>{groups[0]}));
    EXPECT_TRUE(groups[1]->GetMemberItemsVec().empty());
}

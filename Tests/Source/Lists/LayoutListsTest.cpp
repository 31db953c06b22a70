// The layout's list operations against a plain model, in random order.
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutJointsManager.h"
#include "Layouts/CLayoutStatistics.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/UGroups.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>

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

/// What the layout should hold: elements by number in list order, and of each grouped element the chain of its groups.
class CModel {
public:
    using tElements = std::vector<CCompositeGeometry*>;

    tElements elements;
    std::map<CCompositeGeometry*, std::string> articles;
    std::map<CCompositeGeometry*, int> groupOf; ///< innermost group
    std::map<int, int> parentOf;                ///< of each group; 0 for none

    int RootOf(int group) const
    {
        while (parentOf.at(group) != 0) {
            group = parentOf.at(group);
        }
        return group;
    }

    void Group(const tElements& members)
    {
        const int group = ++mLastGroup;
        std::set<int> roots;
        for (CCompositeGeometry* element : members) {
            if (groupOf.count(element) != 0) {
                roots.insert(RootOf(groupOf[element]));
            }
        }
        parentOf[group] = 0;
        for (CCompositeGeometry* element : members) {
            groupOf.try_emplace(element, group);
        }
        for (const int root : roots) {
            parentOf[root] = group;
        }
    }

    void Dissolve(const tElements& selected)
    {
        std::set<int> roots;
        for (CCompositeGeometry* element : selected) {
            if (groupOf.count(element) != 0) {
                roots.insert(RootOf(groupOf[element]));
            }
        }
        for (const int root : roots) {
            parentOf.erase(root);
            std::erase_if(groupOf, [root](const auto& entry) { return entry.second == root; });
            for (auto& [group, parent] : parentOf) {
                parent = parent == root ? 0 : parent;
            }
        }
    }

    void Delete(const tElements& doomed)
    {
        for (CCompositeGeometry* element : doomed) {
            std::erase(elements, element);
            groupOf.erase(element);
            articles.erase(element);
        }
        for (bool changed = true; changed;) { // groups without members go, from the inside out
            changed = std::erase_if(parentOf, [this](const auto& entry) {
                          const int group = entry.first;
                          const auto isHere = [group](const auto& other) { return other.second == group; };
                          return std::none_of(groupOf.begin(), groupOf.end(), isHere) &&
                                 std::none_of(parentOf.begin(), parentOf.end(), isHere);
                      }) != 0;
        }
    }

private:
    int mLastGroup = 0;
};

/// The numbers of the model's groups from an element outwards, as groups of the layout.
void ExpectSameGroups(CLayout& layout, const CModel& model)
{
    ASSERT_EQ(layout.GetGroups().size(), model.parentOf.size());
    std::map<const CGroup*, int> numberOf;
    for (CCompositeGeometry* element : model.elements) {
        const auto grouped = model.groupOf.find(element);
        ASSERT_EQ(layout.GetGroupsManager()->IsInGroup(element), grouped != model.groupOf.end());
        if (grouped == model.groupOf.end()) {
            continue;
        }
        const CGroup* group = layout.GetGroupsManager()->GetGroupForGeometry(element);
        const auto& items = group->GetMemberItemsVec();
        ASSERT_EQ(std::count(items.begin(), items.end(), element), 1);
        for (int number = grouped->second; number != 0; number = model.parentOf.at(number)) {
            ASSERT_NE(group, nullptr);
            ASSERT_TRUE(layout.ContainsGroup(group));
            ASSERT_EQ(numberOf.emplace(group, number).first->second, number);
            const CGroup* parent = group->GetParentGroup();
            if (parent != nullptr) {
                const auto& members = parent->GetMemberGroupsVec();
                ASSERT_EQ(std::count(members.begin(), members.end(), group), 1);
            }
            group = parent;
        }
        ASSERT_EQ(group, nullptr);
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
        for (int step = 0; step < 120; ++step) {
            CCompositeGeometry* any = model.elements.empty() ? nullptr : model.elements[below(model.elements.size())];
            switch (any == nullptr ? 0 : below(9)) {
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
                model.Delete({any});
                ASSERT_TRUE(layout.DeleteItem(any));
                break;
            case 2: {
                model.Delete({any});
                ASSERT_TRUE(layout.RemoveItem(any));
                ASSERT_FALSE(layout.RemoveItem(any));
                delete any;
                break;
            }
            case 3: {
                CModel::tElements doomed = someElements();
                model.Delete(doomed);
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
                std::erase(model.elements, any);
                if (below(2) == 0) {
                    model.elements.push_back(any);
                    layout.MoveItemToEnd(any);
                } else {
                    model.elements.insert(model.elements.begin(), any);
                    layout.MoveItemToBegin(any);
                }
                break;
            }
            case 6: {
                const CModel::tElements some = someElements();
                if (UGroups::NewGroupFromElementVector(&layout, some) != nullptr) {
                    model.Group(some);
                }
                // All of them in one group already: the new one would hold that alone, which the model makes as well.
                break;
            }
            case 7: {
                const CModel::tElements some = someElements();
                for (CCompositeGeometry* element : model.elements) {
                    element->Unselect();
                }
                for (CCompositeGeometry* element : some) {
                    element->Select();
                }
                model.Dissolve(some);
                UGroups::UngroupGroupsInSelection(&layout);
                break;
            }
            default: { // to a backup and back: the same content in new elements
                CModel::tElements copies;
                std::vector<int> groups;
                layout.BackupGroupAndItemVec(copies, groups);
                CModel renamed = model;
                renamed.articles.clear();
                renamed.groupOf.clear();
                for (size_t i = 0; i < copies.size(); ++i) {
                    renamed.articles[copies[i]] = model.articles[model.elements[i]];
                    if (model.groupOf.count(model.elements[i]) != 0) {
                        renamed.groupOf[copies[i]] = model.groupOf[model.elements[i]];
                    }
                }
                renamed.elements = copies;
                model = renamed;
                layout.RestoreGroupAndItemVec(copies, groups);
                ASSERT_TRUE(copies.empty());
                break;
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

#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layouts/Groups/UGroups.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {
constexpr auto kWarning = Platform::eReportLevel::kWarning;

/// Elements and the groups that a list makes of them.
class CGrouping {
public:
    explicit CGrouping(size_t elements)
    {
        for (size_t i = 0; i < elements; ++i) {
            mElements.push_back(new CCompositeGeometry);
        }
    }
    ~CGrouping()
    {
        Clear();
        for (CCompositeGeometry* element : mElements) {
            delete element;
        }
    }
    CGrouping(const CGrouping&) = delete;
    CGrouping& operator=(const CGrouping&) = delete;

    void Clear()
    {
        for (CGroup* group : mGroups) {
            delete group;
        }
        mGroups.clear();
    }
    void Make(const std::vector<int>& list)
    {
        Clear();
        UGroups::DeserializeGroups(&mManager, mGroups, mElements, list);
    }
    std::vector<int> List() const
    {
        std::vector<int> list;
        UGroups::SerializeGroups(mGroups, mElements, list);
        return list;
    }

    CGroupsManager mManager;
    std::vector<CGroup*> mGroups;
    std::vector<CCompositeGeometry*> mElements;
};

/// One entry of a list: parent, elements, member groups.
struct tEntry {
    int parent;
    std::vector<int> elements;
    std::vector<int> groups;
};

std::vector<int> ListOf(const std::vector<tEntry>& entries)
{
    std::vector<int> list = {static_cast<int>(entries.size())};
    for (const tEntry& entry : entries) {
        list.push_back(entry.parent);
        list.push_back(static_cast<int>(entry.elements.size()));
        list.insert(list.end(), entry.elements.begin(), entry.elements.end());
        list.push_back(static_cast<int>(entry.groups.size()));
        list.insert(list.end(), entry.groups.begin(), entry.groups.end());
    }
    return list;
}
} // namespace

TEST(Groups, ListsMakeTreesAndComeBack)
{
    CGrouping grouping(6);
    for (const auto& list : {
             std::vector<int>{}, ListOf({{-1, {0, 5, 2}, {}}}), ListOf({{-1, {}, {}}}),
             ListOf({{-1, {1, 0}, {2, 1}}, {0, {3}, {}}, {0, {}, {3}}, {2, {5, 4}, {}}}),
             ListOf({{2, {0}, {}}, {2, {1}, {}}, {3, {2}, {1, 0}}, {-1, {}, {2}}}), // members in front of their parents
         }) {
        CReports reports;
        grouping.Make(list);
        EXPECT_EQ(grouping.List(), list);
        EXPECT_TRUE(IsForest(grouping.mGroups));
        EXPECT_THAT(reports.mMessages, IsEmpty());
    }
    EXPECT_EQ(grouping.mManager.GetGroupForGeometry(grouping.mElements[1]), grouping.mGroups[1]);
    EXPECT_EQ(grouping.mManager.GetRootGroup(grouping.mElements[1]), grouping.mGroups[3]);
    std::vector<CCompositeGeometry*> all;
    grouping.mGroups[3]->GetAllMemberItems(all);
    EXPECT_THAT(all, ElementsAre(grouping.mElements[2], grouping.mElements[1], grouping.mElements[0]));
    grouping.Make({0});
    EXPECT_THAT(grouping.mGroups, IsEmpty());
    EXPECT_FALSE(grouping.mManager.IsInGroup(grouping.mElements[1]));
    EXPECT_THAT(grouping.mManager.GetGroups(), IsEmpty());
}

TEST(Groups, HostileListsStillMakeForests)
{
    const struct {
        const char* what;
        std::vector<int> list;
        std::vector<int> kept;
        const char* warning;
    } cases[] = {
        {"its own parent", ListOf({{0, {0}, {}}}), ListOf({{-1, {0}, {}}}), "No parent group with index 0"},
        {"its own member", ListOf({{-1, {0}, {0}}}), ListOf({{-1, {0}, {}}}), "Group 0 cannot be a member of group 0"},
        {"a parent that is not there", ListOf({{1, {0}, {}}}), ListOf({{-1, {0}, {}}}), "No parent group with index 1"},
        {"a parent far below", ListOf({{INT_MIN, {0}, {}}}), ListOf({{-1, {0}, {}}}), nullptr},
        {"members that are not there", ListOf({{-1, {0}, {5, -1, INT_MAX, INT_MIN}}}), ListOf({{-1, {0}, {}}}),
         "No group with index 2147483647"},
        {"elements that are not there", ListOf({{-1, {4, -1, 2, INT_MAX}, {}}}), ListOf({{-1, {2}, {}}}),
         "No element with index 2147483647"},
        {"an element twice", ListOf({{-1, {1, 1}, {}}, {-1, {2, 1}, {}}}), ListOf({{-1, {1}, {}}, {-1, {2}, {}}}),
         "Inconsistency detected - element - already in group"},
        {"a member twice", ListOf({{-1, {}, {1, 1}}, {0, {}, {}}}), ListOf({{-1, {}, {1}}, {0, {}, {}}}), nullptr},
        {"cycle of two by members", ListOf({{-1, {}, {1}}, {-1, {}, {0}}}), ListOf({{-1, {}, {1}}, {0, {}, {}}}),
         "Group 0 cannot be a member of group 1"},
        {"cycle of two by parents", ListOf({{1, {}, {}}, {0, {}, {}}}), ListOf({{1, {}, {}}, {-1, {}, {0}}}),
         "Group 1 cannot be a member of group 0"},
        {"cycle of two by both", ListOf({{1, {}, {1}}, {0, {}, {0}}}), ListOf({{-1, {}, {1}}, {0, {}, {}}}),
         "Group 0 cannot be a member of group 1"},
        {"two parents by members", ListOf({{-1, {}, {2}}, {-1, {}, {2}}, {-1, {}, {}}}),
         ListOf({{-1, {}, {2}}, {-1, {}, {}}, {0, {}, {}}}), "Group 2 cannot be a member of group 1"},
        {"two parents, one by its own word", ListOf({{-1, {}, {2}}, {-1, {}, {2}}, {1, {}, {}}}),
         ListOf({{-1, {}, {}}, {-1, {}, {2}}, {1, {}, {}}}), "Parent group already assigned!"},
        {"a parent whose list does not name it", ListOf({{-1, {}, {}}, {0, {}, {}}}),
         ListOf({{-1, {}, {1}}, {0, {}, {}}}), nullptr},
        {"more groups than there is list", {INT_MAX, -1, 1, 0, 0}, ListOf({{-1, {0}, {}}}), nullptr},
        {"a negative count of groups", {-5, -1, 1, 0, 0}, {}, "(current: 1, expected: 5)"},
        {"more elements than there is list", {1, -1, INT_MAX, 0, 1}, ListOf({{-1, {0, 1}, {}}}), "expected: 5)"},
        {"more member groups than there is list", {1, -1, 1, 0, INT_MAX}, ListOf({{-1, {0}, {}}}), "expected: 5)"},
        {"negative counts inside", {1, -1, -3, -4}, ListOf({{-1, {}, {}}}), nullptr},
        {"a list that ends early",
         {2, -1, 1, 0, 0, -1},
         ListOf({{-1, {0}, {}}, {-1, {}, {}}}),
         "Expected index doesn't match size of deserialized groups (current: 8, expected: 6)"},
        {"a list that goes on",
         {1, -1, 1, 0, 0, 7, 7},
         ListOf({{-1, {0}, {}}}),
         "static void UGroups::DeserializeGroups(CGroupsManager *, vector<CGroup *> &, vector<CCompositeGeometry *> &, "
         "vector<int> &): Expected index doesn't match size of deserialized groups (current: 5, expected: 7)"},
    };
    CGrouping grouping(4);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CReports reports;
        grouping.Make(c.list);
        EXPECT_TRUE(IsForest(grouping.mGroups));
        EXPECT_EQ(grouping.List(), c.kept);
        if (c.warning != nullptr) {
            EXPECT_THAT(reports.mMessages, Contains(Pair(kWarning, HasSubstr(c.warning))));
        } else {
            EXPECT_THAT(reports.mMessages, IsEmpty());
        }
    }
}

TEST(Groups, AnyListMakesAForestThatComesBack)
{
    CGrouping grouping(20);
    CRandom random(3);
    for (int round = 0; round < 2000; ++round) {
        std::vector<tEntry> entries(static_cast<size_t>(random.Int(1, 12)));
        const auto index = [&] { return static_cast<int>(random.Int(-2, static_cast<int64_t>(entries.size()))); };
        for (tEntry& entry : entries) {
            entry.parent = random.Bool() ? -1 : index();
            for (int64_t i = random.Int(0, 4); i > 0; --i) {
                entry.elements.push_back(static_cast<int>(random.Int(-1, 20)));
                entry.groups.push_back(index());
            }
        }
        std::vector<int> list = ListOf(entries);
        if (random.Int(0, 3) == 0) { // any number may be any other
            list[static_cast<size_t>(random.Int(0, static_cast<int64_t>(list.size()) - 1))] = index();
        }
        grouping.Make(list);
        ASSERT_TRUE(IsForest(grouping.mGroups)) << testing::PrintToString(list);
        const std::vector<int> kept = grouping.List();
        grouping.Make(kept);
        ASSERT_EQ(grouping.List(), kept) << testing::PrintToString(list);
    }
}

TEST(Groups, DeepAndWideTreesLoadAndGo)
{
    constexpr int kMany = 100000;
    const auto chain = [](bool byParents, bool outsideIn) {
        std::vector<tEntry> entries(kMany, tEntry{-1, {}, {}});
        for (int i = 0; i + 1 < kMany; ++i) {
            const int outer = outsideIn ? i : i + 1;
            const int inner = outsideIn ? i + 1 : i;
            if (byParents) {
                entries[static_cast<size_t>(inner)].parent = outer;
            } else {
                entries[static_cast<size_t>(outer)].groups.push_back(inner);
            }
        }
        entries[outsideIn ? kMany - 1 : 0].elements = {0};
        return ListOf(entries);
    };
    std::vector<tEntry> wide(kMany, tEntry{0, {}, {}});
    wide[0].parent = -1;
    wide[1].elements = {0};
    for (int i = 1; i < kMany; ++i) {
        wide[0].groups.push_back(i);
    }
    std::vector<tEntry> ring(kMany, tEntry{-1, {}, {}});
    for (int i = 0; i < kMany; ++i) {
        ring[static_cast<size_t>(i)].groups.push_back((i + 1) % kMany);
    }
    ring[kMany - 1].elements = {0};
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"members, outside in", chain(false, true)},
        {"members, inside out", chain(false, false)},
        {"parents, outside in", chain(true, true)},
        {"parents, inside out", chain(true, false)},
        {"wide", ListOf(wide)},
        {"ring", ListOf(ring)},
    };
    for (const auto& [what, list] : cases) {
        SCOPED_TRACE(what);
        tLayout source;
        source.elements.resize(1);
        source.groups = list;
        CTestLayout layout;
        ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
        EXPECT_THAT(layout.GetGroups(), SizeIs(kMany));
        EXPECT_TRUE(IsForest(layout.GetGroups()));
        CCompositeGeometry* element = layout.GetElements()[0];
        CGroup* root = layout.GetGroupsManager()->GetRootGroup(element);
        EXPECT_EQ(root->GetParentGroup(), nullptr);
        EXPECT_EQ(std::count_if(layout.GetGroups().begin(), layout.GetGroups().end(),
                                [](const CGroup* group) { return group->GetParentGroup() == nullptr; }),
                  1);
        EXPECT_TRUE(root->IsMember(layout.GetGroupsManager()->GetGroupForGeometry(element)));
        std::vector<CCompositeGeometry*> all;
        root->GetAllMemberItems(all);
        EXPECT_THAT(all, ElementsAre(element));
        layout.ClearGroupVec();
        EXPECT_FALSE(layout.GetGroupsManager()->IsInGroup(element));
        EXPECT_THAT(layout.GetGroupsManager()->GetGroups(), IsEmpty());
    }
}

TEST(Groups, GroupingElements)
{
    CReports reports;
    tLayout source;
    source.elements.resize(4);
    for (size_t i = 0; i < 4; ++i) {
        source.elements[i].name = std::string("E") + std::to_string(i);
    }
    CTestLayout layout;
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    const std::vector<CCompositeGeometry*>& elements = layout.GetElements();
    CGroup* inner = UGroups::NewGroupFromElementVector(&layout, {elements[0], elements[1]});
    CGroup* outer = UGroups::NewGroupFromElementVector(&layout, {elements[1], elements[2]});
    EXPECT_THAT(outer->GetMemberGroupsVec(), ElementsAre(inner));
    EXPECT_THAT(outer->GetMemberItemsVec(), ElementsAre(elements[2]));
    EXPECT_THAT(layout.GetGroups(), ElementsAre(inner, outer));
    EXPECT_THAT(reports.mMessages, IsEmpty());

    EXPECT_EQ(UGroups::NewGroupFromElementVector(&layout, {elements[3]}), nullptr);
    EXPECT_THAT(reports.mMessages.back().second, EndsWith("Not enough elements to create group (1)"));
    outer->AddMember(elements[0]);
    EXPECT_EQ(reports.mMessages.back().second,
              "void CGroup::AddMember(CCompositeGeometry *): Inconsistency detected - element E0 already in group");
    EXPECT_EQ(layout.GetGroupsManager()->GetGroupForGeometry(elements[3]), nullptr);
    EXPECT_EQ(reports.mMessages.back().second,
              "CGroup *CGroupsManager::GetGroupForGeometry(CCompositeGeometry *): Element E3 not grouped");
    layout.GetGroupsManager()->Ungroup(elements[3]);
    EXPECT_THAT(reports.mMessages.back().second, EndsWith("Failed to disassociate - Element E3 not grouped"));
    layout.GetGroupsManager()->Group(elements[0], outer);
    EXPECT_THAT(reports.mMessages.back().second, HasSubstr("Element E0 already in group"));
    CGroup other(layout.GetGroupsManager());
    inner->SetParentGroup(&other);
    EXPECT_EQ(reports.mMessages.back().second, "void CGroup::SetParentGroup(CGroup *): Parent group already assigned!");
    EXPECT_EQ(inner->GetParentGroup(), outer);

    outer->AddMember(outer);
    outer->AddMember(inner);
    inner->AddMember(outer);
    other.AddMember(inner);
    EXPECT_TRUE(IsForest(layout.GetGroups()));
    EXPECT_THAT(outer->GetMemberGroupsVec(), SizeIs(1));
    EXPECT_THAT(other.GetMemberGroupsVec(), IsEmpty());

    // What Save writes of it comes back.
    const std::string saved = layout.SavedBytes();
    CTestLayout again;
    ASSERT_EQ(again.LoadBytes(saved), CLayout::kLoaded);
    ASSERT_THAT(again.GetGroups(), SizeIs(2));
    EXPECT_EQ(again.GetGroups()[0]->GetParentGroup(), again.GetGroups()[1]);
    EXPECT_THAT(again.GetGroups()[0]->GetMemberItemsVec(), ElementsAre(again.GetElements()[0], again.GetElements()[1]));
    EXPECT_THAT(again.GetGroups()[1]->GetMemberItemsVec(), ElementsAre(again.GetElements()[2]));
}

TEST(Groups, DeletingFreesTheMembers)
{
    CGrouping grouping(4);
    grouping.Make(ListOf({{-1, {0}, {1, 2, 3}}, {0, {1}, {}}, {0, {2}, {}}, {0, {3}, {}}}));
    CGroup* const root = grouping.mGroups[0];
    delete grouping.mGroups[2];
    grouping.mGroups.erase(grouping.mGroups.begin() + 2);
    EXPECT_THAT(root->GetMemberGroupsVec(), ElementsAre(grouping.mGroups[1], grouping.mGroups[2]));
    EXPECT_FALSE(grouping.mManager.IsInGroup(grouping.mElements[2]));
    delete root;
    grouping.mGroups.erase(grouping.mGroups.begin());
    EXPECT_FALSE(grouping.mManager.IsInGroup(grouping.mElements[0]));
    EXPECT_TRUE(grouping.mManager.IsInGroup(grouping.mElements[1]));
    EXPECT_EQ(grouping.mGroups[0]->GetParentGroup(), nullptr);
    EXPECT_EQ(grouping.List(), ListOf({{-1, {1}, {}}, {-1, {3}, {}}}));
    EXPECT_THAT(grouping.mManager.GetGroups(), SizeIs(2));
}

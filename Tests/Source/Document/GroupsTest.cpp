#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layouts/Groups/UGroups.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

using testing::Contains;
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
} // namespace

TEST(Groups, ListsMakeForests)
{
    constexpr char kSecond[] = "void CGroup::SetParentGroup(CGroup *): Parent group already assigned!";
    constexpr char kCircle[] = "void CGroup::SetParentGroup(CGroup *): Group contains its parent";
    const std::vector<std::vector<int>> whole = {
        {},
        GroupList({{-1, {0, 5, 2}, {}}}),
        GroupList({{-1, {1, 0}, {2, 1}}, {0, {3}, {}}, {0, {}, {3}}, {2, {5, 4}, {}}}),
        GroupList({{2, {0}, {}}, {2, {1}, {}}, {3, {2}, {1, 0}}, {-1, {}, {2}}}), // members in front of their parents
        {2, -1, 1, 0, 0, 0, 1, 1, 0}, // a parent that does not list its member
    };
    struct tCase {
        const char* what;
        std::vector<int> list;
        std::vector<int> kept;
        const char* warning;
    };
    std::vector<tCase> cases = {
        {"its own parent", GroupList({{0, {0}, {}}}), GroupList({{-1, {0}, {}}}), kCircle},
        {"its own member", GroupList({{-1, {0}, {0}}}), GroupList({{-1, {0}, {}}}), kCircle},
        {"a parent that is not there", GroupList({{1, {0}, {}}}), GroupList({{-1, {0}, {}}}), "No group with index 1"},
        {"a parent far below", GroupList({{INT_MIN, {0}, {}}}), GroupList({{-1, {0}, {}}}), nullptr},
        {"members that are not there", GroupList({{-1, {0}, {5, -1, INT_MAX, INT_MIN}}}), GroupList({{-1, {0}, {}}}),
         "No group with index 2147483647"},
        {"elements that are not there", GroupList({{-1, {99, -1, 2, INT_MAX}, {}}}), GroupList({{-1, {2}, {}}}),
         "No element with index 2147483647"},
        {"an element twice", GroupList({{-1, {1, 1}, {}}, {-1, {2, 1}, {}}}), GroupList({{-1, {1}, {}}, {-1, {2}, {}}}),
         "Inconsistency detected - element - already in group"},
        {"a member twice", GroupList({{-1, {}, {1, 1}}, {0, {}, {}}}), GroupList({{-1, {}, {1}}, {0, {}, {}}}),
         nullptr},
        {"circle by members", GroupList({{-1, {}, {1}}, {-1, {}, {0}}}), GroupList({{-1, {}, {1}}, {0, {}, {}}}),
         kCircle},
        {"circle by parents", GroupList({{1, {}, {}}, {0, {}, {}}}), GroupList({{1, {}, {}}, {-1, {}, {}}}), kCircle},
        {"two parents by members", GroupList({{-1, {}, {2}}, {-1, {}, {2}}, {-1, {}, {}}}),
         GroupList({{-1, {}, {2}}, {-1, {}, {}}, {0, {}, {}}}), kSecond},
        {"a parent's word before the member's", GroupList({{-1, {}, {2}}, {-1, {}, {2}}, {1, {}, {}}}),
         GroupList({{-1, {}, {2}}, {-1, {}, {}}, {0, {}, {}}}), kSecond},
        {"more groups than there is list", {INT_MAX, -1, 1, 0, 0}, GroupList({{-1, {0}, {}}}), "expected: 5)"},
        {"a negative count of groups", {-5, -1, 1, 0, 0}, {}, "(current: 1, expected: 5)"},
        {"more elements than there is list", {1, -1, INT_MAX, 0, 1}, GroupList({{-1, {0, 1}, {}}}), "expected: 5)"},
        {"more member groups than there is list", {1, -1, 1, 0, INT_MAX}, GroupList({{-1, {0}, {}}}), "expected: 5)"},
        {"negative counts inside", {1, -1, -3, -4}, GroupList({{-1, {}, {}}}), nullptr},
        {"a list that ends early",
         {2, -1, 1, 0, 0, -1},
         GroupList({{-1, {0}, {}}, {-1, {}, {}}}),
         "(current: 8, expected: 6)"},
        {"a list that goes on",
         {1, -1, 1, 0, 0, 7, 7},
         GroupList({{-1, {0}, {}}}),
         "static void UGroups::DeserializeGroups(CGroupsManager *, vector<CGroup *> &, vector<CCompositeGeometry *> &, "
         "vector<int> &): Expected index doesn't match size of deserialized groups (current: 5, expected: 7)"},
    };
    for (const std::vector<int>& list : whole) {
        cases.push_back({"comes back", list, list, nullptr});
    }
    CGrouping grouping(6);
    for (const tCase& c : cases) {
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

TEST(Groups, DeepAndWideTreesComeAndGo)
{
    constexpr int kMany = 50000;
    using tLink = void (*)(std::vector<tGroupEntry>&, int);
    const std::pair<const char*, tLink> cases[] = {
        {"members, outside in",
         [](std::vector<tGroupEntry>& all, int i) { all[static_cast<size_t>(i) - 1].groups = {i}; }},
        {"members, inside out",
         [](std::vector<tGroupEntry>& all, int i) { all[static_cast<size_t>(kMany - i)].groups = {kMany - i - 1}; }},
        {"parents, outside in",
         [](std::vector<tGroupEntry>& all, int i) { all[static_cast<size_t>(i)].parent = i - 1; }},
        {"parents, inside out",
         [](std::vector<tGroupEntry>& all, int i) { all[static_cast<size_t>(i) - 1].parent = i; }},
        {"wide", [](std::vector<tGroupEntry>& all, int i) { all[0].groups.push_back(i); }},
        {"each wants the first as well",
         [](std::vector<tGroupEntry>& all, int i) {
             all[static_cast<size_t>(i) - 1].groups = {i, 0};
         }},
    };
    CGrouping grouping(1);
    for (const auto& [what, link] : cases) {
        SCOPED_TRACE(what);
        std::vector<tGroupEntry> entries(kMany, tGroupEntry{-1, {}, {}});
        entries[kMany / 2].elements = {0};
        for (int i = 1; i < kMany; ++i) {
            link(entries, i);
        }
        grouping.Make(GroupList(entries));
        ASSERT_THAT(grouping.mGroups, SizeIs(kMany));
        EXPECT_TRUE(IsForest(grouping.mGroups));
        CGroup* root = grouping.mManager.GetRootGroup(grouping.mElements[0]);
        EXPECT_TRUE(std::all_of(grouping.mGroups.begin(), grouping.mGroups.end(),
                                [root](CGroup* group) { return group->GetRootGroup() == root; }));
        std::vector<CCompositeGeometry*> items;
        root->GetAllMemberItems(items);
        EXPECT_EQ(items.size(), root->GetMemberGroupsVec().size() > 0 ? 1U : 0U);
    }
}

TEST(Groups, WhatIsGroupedOrNotIsReported)
{
    CReports reports;
    CGrouping grouping(4);
    grouping.mElements[0]->SetName("E0");
    grouping.mElements[3]->SetName("E3");
    grouping.Make(GroupList({{-1, {0}, {}}, {-1, {}, {}}}));
    CGroupsManager& manager = grouping.mManager;
    grouping.mGroups[1]->AddMember(grouping.mElements[0]);
    EXPECT_EQ(reports.mMessages.back().second,
              "void CGroup::AddMember(CCompositeGeometry *): Inconsistency detected - element E0 already in group");
    EXPECT_EQ(manager.GetGroupForGeometry(grouping.mElements[3]), nullptr);
    EXPECT_EQ(reports.mMessages.back().second,
              "CGroup *CGroupsManager::GetGroupForGeometry(CCompositeGeometry *): Element E3 not grouped");
    manager.Ungroup(grouping.mElements[3]);
    EXPECT_THAT(reports.mMessages.back().second, EndsWith("Failed to disassociate - Element E3 not grouped"));
    manager.Group(grouping.mElements[0], grouping.mGroups[1]);
    EXPECT_THAT(reports.mMessages.back().second, HasSubstr("Element E0 already in group"));
    manager.Group(grouping.mElements[3], grouping.mGroups[1]); // which does not list it
    grouping.Clear();
    EXPECT_FALSE(manager.IsInGroup(grouping.mElements[3]));
}

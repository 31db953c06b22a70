#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layouts/Groups/UGroups.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {
/// A layout whose elements are grouped by lists.
class CGrouping : public CLayout {
public:
    explicit CGrouping(int elements)
    {
        for (int i = 0; i < elements; ++i) {
            AddItem(new CCompositeGeometry);
            GetElements().back()->SetName(("E" + std::to_string(i)).c_str());
        }
    }
    void Make(const std::vector<int>& list)
    {
        std::vector<CCompositeGeometry*> elements;
        std::vector<int> ignored;
        BackupGroupAndItemVec(elements, ignored);
        RestoreGroupAndItemVec(elements, list);
    }
    std::vector<int> List()
    {
        std::vector<int> list;
        UGroups::SerializeGroups(GetGroups(), GetElements(), list);
        return list;
    }
};
} // namespace

TEST(Groups, ListsMakeForests)
{
    const struct {
        const char* what;
        std::vector<int> list;
        std::vector<int> kept;
        const char* warning;
    } cases[] = {
        {"a parent far below", GroupList({{INT_MIN, {0}, {}}}), GroupList({{-1, {0}, {}}}), nullptr},
        {"a parent that is not there", GroupList({{1, {0}, {}}}), GroupList({{-1, {0}, {}}}), "No group with index 1"},
        {"members that are not there", GroupList({{-1, {0}, {5, -1, INT_MAX, INT_MIN}}}), GroupList({{-1, {0}, {}}}),
         "No group with index 2147483647"},
        {"elements that are not there", GroupList({{-1, {99, -1, 2, INT_MAX}, {}}}), GroupList({{-1, {2}, {}}}),
         "No element with index 2147483647"},
        {"an element twice", GroupList({{-1, {1, 1}, {}}}), GroupList({{-1, {1}, {}}}),
         "Inconsistency detected - element E1 already in group"},
        {"more groups than there is list", {INT_MAX, -1, 1, 0, 0}, GroupList({{-1, {0}, {}}}), "expected: 5)"},
        {"a negative count of groups", {-5, -1, 1, 0, 0}, {}, "(current: 1, expected: 5)"},
        {"more elements than there is list", {1, -1, INT_MAX, 0, 1}, GroupList({{-1, {0, 1}, {}}}), "expected: 5)"},
        {"more member groups than there is list", {1, -1, 1, 0, INT_MAX}, GroupList({{-1, {0}, {}}}), "expected: 5)"},
        {"negative counts inside", {1, -1, -3, -4}, GroupList({{-1, {}, {}}}), nullptr},
        {"a list that ends early", {2, -1, 1, 0, 0, -1}, GroupList({{-1, {0}, {}}, {-1, {}, {}}}), "(current: 8, "},
        {"a list that goes on", {1, -1, 1, 0, 0, 7, 7}, GroupList({{-1, {0}, {}}}), "(current: 5, expected: 7)"},
    };
    CGrouping grouping(6);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CReports reports;
        grouping.Make(c.list);
        EXPECT_TRUE(IsForest(grouping.GetGroups()));
        EXPECT_EQ(grouping.List(), c.kept);
        if (c.warning != nullptr) {
            EXPECT_THAT(reports.mMessages, Contains(Pair(Platform::eReportLevel::kWarning, HasSubstr(c.warning))));
        } else {
            EXPECT_THAT(reports.mMessages, IsEmpty());
        }
    }
}

TEST(Groups, DeepAndWideTreesComeAndGo)
{
    constexpr int kMany = 50000;
    using tEntries = std::vector<tGroupEntry>;
    const std::pair<const char*, void (*)(tEntries&, int)> cases[] = {
        {"members, outside in", [](tEntries& all, int i) { all[static_cast<size_t>(i - 1)].groups = {i}; }},
        {"members, inside out", [](tEntries& all, int i) { all[static_cast<size_t>(i)].groups = {i - 1}; }},
        {"parents, outside in", [](tEntries& all, int i) { all[static_cast<size_t>(i)].parent = i - 1; }},
        {"parents, inside out", [](tEntries& all, int i) { all[static_cast<size_t>(i - 1)].parent = i; }},
        {"wide", [](tEntries& all, int i) { all[0].groups.push_back(i); }},
        {"circles",
         [](tEntries& all, int i) {
             all[static_cast<size_t>(i - 1)].groups = {i, 0};
         }},
    };
    CGrouping grouping(1);
    for (const auto& [what, link] : cases) {
        SCOPED_TRACE(what);
        tEntries entries(kMany);
        for (int i = 1; i < kMany; ++i) {
            link(entries, i);
        }
        entries[kMany / 2].elements = {0};
        grouping.Make(GroupList(entries));
        ASSERT_THAT(grouping.GetGroups(), SizeIs(kMany));
        EXPECT_TRUE(IsForest(grouping.GetGroups()));
        CGroup* root = grouping.GetGroupsManager()->GetRootGroup(grouping.GetElements()[0]);
        EXPECT_TRUE(std::all_of(grouping.GetGroups().begin(), grouping.GetGroups().end(),
                                [root](CGroup* group) { return group->GetRootGroup() == root; }));
        std::vector<CCompositeGeometry*> items;
        root->GetAllMemberItems(items);
        EXPECT_EQ(items.size(), root->GetMemberGroupsVec().size() > 0 ? 1U : 0U);
    }
}

TEST(Groups, WhatAGroupDoesNotListIsFreeWhenItGoes)
{
    CGrouping grouping(2);
    CGroupsManager& manager = *grouping.GetGroupsManager();
    CCompositeGeometry* element = grouping.GetElements()[1];
    CGroup* group = UGroups::NewGroupFromElementVector(&grouping, grouping.GetElements());
    group->RemoveMember(element);
    manager.Ungroup(element);
    manager.Group(element, group);
    grouping.ClearGroupVec();
    EXPECT_FALSE(manager.IsInGroup(element));
}

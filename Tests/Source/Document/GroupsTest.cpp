#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layouts/Groups/UGroups.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <set>

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
    void Delete(size_t group)
    {
        delete mGroups[group];
        mGroups.erase(mGroups.begin() + static_cast<long>(group));
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

/// Groups as they should be, by their places in the list; and by element which group the registry has.
class CModel {
public:
    void Read(const std::vector<tEntry>& claims)
    {
        mEntries.assign(claims.size(), tEntry{-1, {}, {}});
        mHolders.clear();
        for (size_t i = 0; i < claims.size(); ++i) {
            for (const int element : claims[i].elements) {
                AddElement(i, element);
            }
        }
        for (size_t i = 0; i < claims.size(); ++i) {
            if (IsGroup(claims[i].parent)) {
                SetParent(i, static_cast<size_t>(claims[i].parent));
            }
            for (const int group : claims[i].groups) {
                if (IsGroup(group)) {
                    AddMember(i, static_cast<size_t>(group));
                }
            }
        }
    }
    void AddElement(size_t group, int element)
    {
        if (element >= 0 && element < kElements && mHolders.emplace(element, group).second) {
            mEntries[group].elements.push_back(element);
        }
    }
    void SetParent(size_t group, size_t parent)
    {
        if (mEntries[group].parent < 0 && Root(parent) != group) {
            mEntries[group].parent = static_cast<int>(parent);
        }
    }
    void AddMember(size_t group, size_t sub)
    {
        SetParent(sub, group);
        if (mEntries[sub].parent == static_cast<int>(group) && !Lists(group, sub)) {
            mEntries[group].groups.push_back(static_cast<int>(sub));
        }
    }
    void ClearParent(size_t group)
    {
        for (tEntry& entry : mEntries) {
            std::erase(entry.groups, static_cast<int>(group));
        }
        mEntries[group].parent = -1;
    }
    void Delete(size_t group)
    {
        const int index = static_cast<int>(group);
        ClearParent(group);
        std::erase_if(mHolders, [group](const auto& holder) { return holder.second == group; });
        for (auto& [element, holder] : mHolders) {
            holder -= holder > group ? 1 : 0;
        }
        mEntries.erase(mEntries.begin() + index);
        for (tEntry& entry : mEntries) {
            entry.parent = entry.parent == index ? -1 : entry.parent - (entry.parent > index ? 1 : 0);
            for (int& sub : entry.groups) {
                sub -= sub > index ? 1 : 0;
            }
        }
    }
    size_t Root(size_t group) const
    {
        while (mEntries[group].parent >= 0) {
            group = static_cast<size_t>(mEntries[group].parent);
        }
        return group;
    }
    bool Lists(size_t group, size_t sub) const
    {
        const std::vector<int>& groups = mEntries[group].groups;
        return std::find(groups.begin(), groups.end(), static_cast<int>(sub)) != groups.end();
    }
    std::vector<int> Items(size_t group) const
    {
        std::vector<int> items = mEntries[group].elements;
        for (const int sub : mEntries[group].groups) {
            const std::vector<int> inside = Items(static_cast<size_t>(sub));
            items.insert(items.end(), inside.begin(), inside.end());
        }
        return items;
    }
    bool IsGroup(int index) const { return index >= 0 && static_cast<size_t>(index) < mEntries.size(); }

    static constexpr int kElements = 12;
    std::vector<tEntry> mEntries;
    std::map<int, size_t> mHolders;
};

void ExpectSame(const CGrouping& grouping, const CModel& model)
{
    ASSERT_EQ(grouping.List(), model.mEntries.empty() ? std::vector<int>{} : ListOf(model.mEntries));
    for (size_t i = 0; i < grouping.mGroups.size(); ++i) {
        CGroup* group = grouping.mGroups[i];
        ASSERT_EQ(group->GetRootGroup(), grouping.mGroups[model.Root(i)]);
        std::vector<CCompositeGeometry*> items;
        group->GetAllMemberItems(items);
        std::vector<CCompositeGeometry*> expected;
        for (const int item : model.Items(i)) {
            expected.push_back(grouping.mElements[static_cast<size_t>(item)]);
        }
        ASSERT_EQ(items, expected);
        bool inside = true; // of each group around, as long as all are listed
        for (size_t at = i; model.mEntries[at].parent >= 0;) {
            const auto parent = static_cast<size_t>(model.mEntries[at].parent);
            inside = inside && model.Lists(parent, at);
            ASSERT_EQ(grouping.mGroups[parent]->IsMember(group), inside);
            ASSERT_FALSE(group->IsMember(grouping.mGroups[parent]));
            at = parent;
        }
    }
    for (int i = 0; i < CModel::kElements; ++i) {
        CCompositeGeometry* element = grouping.mElements[static_cast<size_t>(i)];
        const auto holder = model.mHolders.find(i);
        ASSERT_EQ(grouping.mManager.IsInGroup(element), holder != model.mHolders.end());
        ASSERT_TRUE(holder == model.mHolders.end() ||
                    grouping.mManager.GetGroupForGeometry(element) == grouping.mGroups[holder->second]);
    }
    ASSERT_EQ(grouping.mManager.GetGroups(), std::set<CGroup*>(grouping.mGroups.begin(), grouping.mGroups.end()));
}
} // namespace

TEST(Groups, ListsMakeForests)
{
    constexpr char kSecond[] = "void CGroup::SetParentGroup(CGroup *): Parent group already assigned!";
    constexpr char kCircle[] = "void CGroup::SetParentGroup(CGroup *): Group contains its parent";
    const std::vector<std::vector<int>> whole = {
        {},
        ListOf({{-1, {0, 5, 2}, {}}}),
        ListOf({{-1, {1, 0}, {2, 1}}, {0, {3}, {}}, {0, {}, {3}}, {2, {5, 4}, {}}}),
        ListOf({{2, {0}, {}}, {2, {1}, {}}, {3, {2}, {1, 0}}, {-1, {}, {2}}}), // members in front of their parents
        {2, -1, 1, 0, 0, 0, 1, 1, 0},                                          // a parent that does not list its member
    };
    struct tCase {
        const char* what;
        std::vector<int> list;
        std::vector<int> kept;
        const char* warning;
    };
    std::vector<tCase> cases = {
        {"its own parent", ListOf({{0, {0}, {}}}), ListOf({{-1, {0}, {}}}), kCircle},
        {"its own member", ListOf({{-1, {0}, {0}}}), ListOf({{-1, {0}, {}}}), kCircle},
        {"a parent that is not there", ListOf({{1, {0}, {}}}), ListOf({{-1, {0}, {}}}), "No group with index 1"},
        {"a parent far below", ListOf({{INT_MIN, {0}, {}}}), ListOf({{-1, {0}, {}}}), nullptr},
        {"members that are not there", ListOf({{-1, {0}, {5, -1, INT_MAX, INT_MIN}}}), ListOf({{-1, {0}, {}}}),
         "No group with index 2147483647"},
        {"elements that are not there", ListOf({{-1, {99, -1, 2, INT_MAX}, {}}}), ListOf({{-1, {2}, {}}}),
         "No element with index 2147483647"},
        {"an element twice", ListOf({{-1, {1, 1}, {}}, {-1, {2, 1}, {}}}), ListOf({{-1, {1}, {}}, {-1, {2}, {}}}),
         "Inconsistency detected - element - already in group"},
        {"a member twice", ListOf({{-1, {}, {1, 1}}, {0, {}, {}}}), ListOf({{-1, {}, {1}}, {0, {}, {}}}), nullptr},
        {"circle by members", ListOf({{-1, {}, {1}}, {-1, {}, {0}}}), ListOf({{-1, {}, {1}}, {0, {}, {}}}), kCircle},
        {"circle by parents", ListOf({{1, {}, {}}, {0, {}, {}}}), ListOf({{1, {}, {}}, {-1, {}, {}}}), kCircle},
        {"two parents by members", ListOf({{-1, {}, {2}}, {-1, {}, {2}}, {-1, {}, {}}}),
         ListOf({{-1, {}, {2}}, {-1, {}, {}}, {0, {}, {}}}), kSecond},
        {"a parent's word before the member's", ListOf({{-1, {}, {2}}, {-1, {}, {2}}, {1, {}, {}}}),
         ListOf({{-1, {}, {2}}, {-1, {}, {}}, {0, {}, {}}}), kSecond},
        {"more groups than there is list", {INT_MAX, -1, 1, 0, 0}, ListOf({{-1, {0}, {}}}), "expected: 5)"},
        {"a negative count of groups", {-5, -1, 1, 0, 0}, {}, "(current: 1, expected: 5)"},
        {"more elements than there is list", {1, -1, INT_MAX, 0, 1}, ListOf({{-1, {0, 1}, {}}}), "expected: 5)"},
        {"more member groups than there is list", {1, -1, 1, 0, INT_MAX}, ListOf({{-1, {0}, {}}}), "expected: 5)"},
        {"negative counts inside", {1, -1, -3, -4}, ListOf({{-1, {}, {}}}), nullptr},
        {"a list that ends early",
         {2, -1, 1, 0, 0, -1},
         ListOf({{-1, {0}, {}}, {-1, {}, {}}}),
         "(current: 8, expected: 6)"},
        {"a list that goes on",
         {1, -1, 1, 0, 0, 7, 7},
         ListOf({{-1, {0}, {}}}),
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

TEST(Groups, AnyListAndWhateverIsLinkedAfterItMakesAForestThatComesBack)
{
    CGrouping grouping(CModel::kElements);
    CModel model;
    CRandom random(3);
    const auto below = [&random](size_t n) { return static_cast<size_t>(random.Int(0, static_cast<int64_t>(n) - 1)); };
    for (int round = 0; round < 1000; ++round) {
        std::vector<tEntry> claims(below(12) + 1, tEntry{-1, {}, {}});
        const auto claim = [&] { return static_cast<int>(below(claims.size() + 3)) - 2; };
        for (tEntry& entry : claims) {
            entry.parent = random.Bool() ? -1 : claim();
            for (size_t i = below(4); i > 0; --i) {
                entry.elements.push_back(static_cast<int>(below(CModel::kElements + 2)) - 1);
                entry.groups.push_back(claim());
            }
        }
        SCOPED_TRACE(testing::PrintToString(ListOf(claims)));
        grouping.Make(ListOf(claims));
        model.Read(claims);
        for (int step = 0; step < 20 && !grouping.mGroups.empty(); ++step) {
            ExpectSame(grouping, model);
            if (HasFatalFailure()) {
                FAIL() << "step " << step;
            }
            const size_t a = below(grouping.mGroups.size());
            const size_t b = below(grouping.mGroups.size());
            const size_t item = below(CModel::kElements);
            CGroup* const group = grouping.mGroups[a];
            switch (below(7)) {
            case 0:
                group->SetParentGroup(grouping.mGroups[b]);
                model.SetParent(a, b);
                break;
            case 1:
                group->AddMember(grouping.mGroups[b]);
                model.AddMember(a, b);
                break;
            case 2:
                group->ClearParentGroup();
                model.ClearParent(a);
                break;
            case 3:
                group->RemoveMember(grouping.mGroups[b]);
                std::erase(model.mEntries[a].groups, static_cast<int>(b));
                break;
            case 4:
                group->AddMember(grouping.mElements[item]);
                model.AddElement(a, static_cast<int>(item));
                break;
            case 5:
                group->RemoveMember(grouping.mElements[item]);
                std::erase(model.mEntries[a].elements, static_cast<int>(item));
                break;
            default:
                grouping.Delete(a);
                model.Delete(a);
            }
        }
        const std::vector<int> kept = grouping.List();
        grouping.Make(kept);
        ASSERT_EQ(grouping.List(), kept);
    }
}

TEST(Groups, DeepAndWideTreesComeAndGo)
{
    constexpr int kMany = 50000;
    using tLink = void (*)(std::vector<tEntry>&, int);
    const std::pair<const char*, tLink> cases[] = {
        {"members, outside in", [](std::vector<tEntry>& all, int i) { all[static_cast<size_t>(i) - 1].groups = {i}; }},
        {"members, inside out",
         [](std::vector<tEntry>& all, int i) { all[static_cast<size_t>(kMany - i)].groups = {kMany - i - 1}; }},
        {"parents, outside in", [](std::vector<tEntry>& all, int i) { all[static_cast<size_t>(i)].parent = i - 1; }},
        {"parents, inside out", [](std::vector<tEntry>& all, int i) { all[static_cast<size_t>(i) - 1].parent = i; }},
        {"wide", [](std::vector<tEntry>& all, int i) { all[0].groups.push_back(i); }},
        {"each wants the first as well",
         [](std::vector<tEntry>& all, int i) {
             all[static_cast<size_t>(i) - 1].groups = {i, 0};
         }},
    };
    CGrouping grouping(1);
    for (const auto& [what, link] : cases) {
        SCOPED_TRACE(what);
        std::vector<tEntry> entries(kMany, tEntry{-1, {}, {}});
        entries[kMany / 2].elements = {0};
        for (int i = 1; i < kMany; ++i) {
            link(entries, i);
        }
        grouping.Make(ListOf(entries));
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
    grouping.Make(ListOf({{-1, {0}, {}}, {-1, {}, {}}}));
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

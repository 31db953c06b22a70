#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Common/Reports.h"
#include "Elements/Utilities/UElementSelection.h"
#include "Layers/CLayer.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/CGroupsManager.h"
#include "Tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using tElements = std::vector<CCompositeGeometry*>;

namespace {
std::vector<std::string> SelectedNames(const tElements& elements)
{
    tElements selected(3); // what was there before goes
    UElementSelection::GetSelectedElements(elements, selected);
    EXPECT_EQ(UElementSelection::GetNumberOfSelectedItems(elements), std::ssize(selected));
    return Names(selected);
}

void SelectOnly(const tElements& elements, const std::vector<size_t>& indices)
{
    UElementSelection::UnselectAll(elements);
    for (const size_t i : indices) {
        elements[i]->Select();
    }
}
} // namespace

/// Eight elements: 0 to 2 on an open layer, 3 and 4 on a hidden one, 5 and 6 on a locked one, 7 on none.
class SelectionOnLayers : public testing::Test {
protected:
    SelectionOnLayers()
    {
        mHidden.SetVisible(false);
        mLocked.SetLocked(true);
        mTracks.AddChain(8);
        CLayer* const layers[] = {&mOpen, &mOpen, &mOpen, &mHidden, &mHidden, &mLocked, &mLocked, nullptr};
        for (size_t i = 0; i < 8; ++i) {
            mTracks[i]->SetLayer(layers[i]);
        }
    }

    CLayer mOpen = CLayer("open");
    CLayer mHidden = CLayer("hidden");
    CLayer mLocked = CLayer("locked");
    CTracks mTracks;
    const tElements& mAll = mTracks.All();
};

TEST_F(SelectionOnLayers, SelectsNothingHiddenOrLocked)
{
    UElementSelection::SelectAll(mAll);
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("0", "1", "2", "7"));
    EXPECT_EQ(UElementSelection::FindFirstSelectedItem(mAll), mTracks[0]);

    SelectOnly(mAll, {5});
    UElementSelection::SelectAllInLayer(mAll, &mHidden);
    UElementSelection::SelectAllInLayer(mAll, &mLocked);
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("5"));
    UElementSelection::SelectAllInLayer(mAll, &mOpen);
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("0", "1", "2", "5"));
    UElementSelection::UnselectAllInLayer(mAll, &mLocked); // unselecting may do that
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("0", "1", "2"));

    SelectOnly(mAll, {1, 2, 3});
    int unselected = 9;
    int selected = 9;
    UElementSelection::InvertSelection(mAll, unselected, selected);
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("0", "7"));
    EXPECT_EQ(unselected, 3);
    EXPECT_EQ(selected, 2);
    tElements out = mAll;
    UElementSelection::GetUnselectedElements(out, out);
    EXPECT_THAT(Names(out), ElementsAre("1", "2", "3", "4", "5", "6"));
}

TEST_F(SelectionOnLayers, FollowsConnections)
{
    mTracks.Joint(1, 0)->DisconnectJoint(); // leaves 0 alone
    SelectOnly(mAll, {3, 0});
    UElementSelection::SelectAllConnected(mAll, mTracks[4]); // through the hidden and the locked
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("1", "2", "7"));
    UElementSelection::SelectAllConnected(mTracks.Some({7, 0}), nullptr); // from the first selected one
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("1", "2", "7"));
    UElementSelection::UnselectAll(mAll);
    UElementSelection::SelectAllConnected(mAll, nullptr);
    EXPECT_THAT(SelectedNames(mAll), IsEmpty());
}

TEST_F(SelectionOnLayers, KnowsOneLayerAndOneGroup)
{
    CGroupsManager groups;
    CGroup inner(&groups);
    CGroup outer(&groups);
    inner.AddMember(mTracks[0]);
    inner.AddMember(mTracks[1]);
    outer.AddMember(mTracks[3]);
    outer.AddMember(&inner);
    const struct {
        std::vector<size_t> selection;
        bool oneLayer;
        bool oneGroup;
    } cases[] = {{{}, false, false},     {{0, 1}, true, true},      {{3}, true, true},  {{1, 2}, true, false},
                 {{1, 3}, false, false}, {{0, 1, 7}, false, false}, {{5}, true, false}, {{2, 4}, false, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.selection));
        SelectOnly(mAll, c.selection);
        EXPECT_EQ(UElementSelection::SelectionConsistsOfSingleLayer(mAll), c.oneLayer);
        EXPECT_EQ(UElementSelection::SelectionConsistsOfSingleGroup(mAll, &groups), c.oneGroup);
    }
}

TEST(Selection, SelectsWhatIsSimilar)
{
    CTracks tracks;
    const auto add = [&tracks](const char* name, const char* library, std::unique_ptr<CBasicGeometry> component) {
        CCompositeGeometry* element = tracks.Add(0);
        element->SetName(name);
        element->SetRailSetName(library);
        element->AppendBIG(component.release());
        return element;
    };
    CCompositeGeometry* straight = add("A", "Lib", std::make_unique<CStraightBIG>());
    CCompositeGeometry* drawn = add("A", "-", std::make_unique<CPolyBIG>());
    CCompositeGeometry* flex = add("F", "-", std::make_unique<CFlexTrackBIG>());
    CCompositeGeometry* circle = add("C", "-", std::make_unique<COvalBIG>());
    CCompositeGeometry* text = add("T", "-", std::make_unique<CTextBIG>());
    CCompositeGeometry* house = add("H", "Lib", std::make_unique<CPolyBIG>());
    CCompositeGeometry* fence = add("Z", "-", std::make_unique<CPolyBIG>());
    flex->SetModelScale(12);
    house->SetManufacturer("Maker");
    text->GetLayoutItemAttributes().fillColor = {0, 0, 1};
    CLayer locked("locked");
    locked.SetLocked(true);
    fence->SetLayer(&locked);

    using tSelect = void (*)(const CCompositeGeometry*, const tElements&);
    using U = UElementSelection;
    const struct {
        const char* what;
        tSelect select;
        CCompositeGeometry* like;
        std::vector<std::string> selected; // besides T, which is selected already
    } cases[] = {
        {"colour", &U::SelectSameColor, house, {"A", "A", "F", "C", "T", "H"}},
        {"manufacturer", &U::SelectSimilarManufacturer, house, {"T", "H"}},
        {"library", &U::SelectSimilarRailset, house, {"A", "T", "H"}},
        {"no library", &U::SelectSimilarRailset, drawn, {"T"}},
        {"scale of tracks", &U::SelectSimilarScale, straight, {"A", "T"}},
        {"scale of no track", &U::SelectSimilarScale, circle, {"T"}},
        {"name", &U::SelectSimilarNames, drawn, {"A", "A", "T"}},
        {"polygons of no library", &U::SelectSimilarDynTypes, house, {"A", "T"}},
        {"like an article", &U::SelectSimilar, straight, {"A", "A", "T"}},
        {"like a flexible track", &U::SelectSimilar, flex, {"F", "T"}},
        {"tracks",
         [](const CCompositeGeometry*, const tElements& all) { U::SelectTrackElements(all); },
         nullptr,
         {"A", "F", "T"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SelectOnly(tracks.All(), {4});
        c.select(c.like, tracks.All());
        EXPECT_EQ(SelectedNames(tracks.All()), c.selected);
    }
    SelectOnly(tracks.All(), {});
    UElementSelection::SelectSimilarDynTypes(drawn, tracks.All());
    EXPECT_TRUE(drawn->IsSelected()); // this "A", and not the article
    UElementSelection::SelectTextElements(tracks.All());
    EXPECT_THAT(SelectedNames(tracks.All()), ElementsAre("A", "T"));
}

TEST(Selection, FindsEndsAndGapsOfSections)
{
    // 0 - 1 - 2 - 3, 4 joined to 3's third joint, 5 with a single joint, 6 - 7 - 8 a ring.
    CTracks tracks;
    for (const int joints : {2, 2, 2, 3, 2, 1, 2, 2, 2}) {
        tracks.Add(joints);
    }
    for (size_t i = 0; i < 3; ++i) {
        tracks.Connect(i, 1, i + 1, 0);
        tracks.Connect(6 + i, 1, 6 + (i + 1) % 3, 0);
    }
    tracks.Connect(3, 2, 4, 0);
    tracks.Connect(5, 0, 4, 1);
    struct tEnds {
        int first, firstJoint, last, lastJoint;
    };
    constexpr int kNone = -1;
    const struct {
        std::vector<size_t> section;
        tEnds ends;
        bool contiguous;
    } cases[] = {
        {{0, 1, 2}, {0, 0, 2, 1}, true},
        {{2, 0, 1}, {2, 1, 0, 0}, true},
        {{0, 2}, {0, 0, 2, 0}, false},    // a gap
        {{0, 1, 3}, {0, 0, 3, 0}, false}, // three ends, the last one kept
        {{2, 3, 4}, {2, 0, 4, 1}, false}, // goes on at 3's free joint only, which 4 is not behind
        {{4, 5}, {4, 0, kNone, 0}, true}, // 5 ends within, so there is one end
        {{6, 7, 8}, {kNone, 0, kNone, 0}, false},
        {{0, 1, 6, 7, 8}, {0, 0, 1, 1}, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.section));
        const tElements section = tracks.Some(c.section);
        const auto element = [&tracks](int i) { return i != kNone ? tracks[static_cast<size_t>(i)] : nullptr; };
        const auto joint = [&tracks](int i, int of) {
            return i != kNone ? tracks.Joint(static_cast<size_t>(i), of) : nullptr;
        };
        CCompositeGeometry* ends[] = {tracks[0], tracks[0]};
        CJoint* joints[] = {tracks.Joint(0, 0), tracks.Joint(0, 0)};
        const bool both = c.ends.first != kNone && c.ends.last != kNone;
        EXPECT_EQ(UElementSelection::GetFirstLastTrackFromSection(section, &ends[0], &ends[1], &joints[0], &joints[1]),
                  both);
        EXPECT_THAT(ends, ElementsAre(element(c.ends.first), element(c.ends.last)));
        EXPECT_THAT(joints, ElementsAre(joint(c.ends.first, c.ends.firstJoint), joint(c.ends.last, c.ends.lastJoint)));
        EXPECT_EQ(UElementSelection::GetFirstLastTrackFromSection(section, &ends[0], &ends[1]), both);
        EXPECT_EQ(UElementSelection::IsSelectionContiguous(section), c.contiguous);
    }

    CCompositeGeometry* untouched = tracks[5];
    EXPECT_TRUE(UElementSelection::GetFirstLastTrackFromSection(tracks.Some({1}), &untouched, nullptr));
    EXPECT_EQ(untouched, tracks[5]);
    EXPECT_FALSE(UElementSelection::IsSelectionContiguous(tracks.Some({1})));

    const UElementSelection::tElementSet two = {tracks[0], tracks[4]};
    EXPECT_TRUE(UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(tracks[3], two));
    EXPECT_FALSE(UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(tracks[2], two));
    EXPECT_FALSE(UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(tracks[0], two)); // nor to itself

    CTracks chain;
    chain.AddChain(100000);
    EXPECT_TRUE(UElementSelection::IsSelectionContiguous(chain.All()));
}

TEST(SelectionDeathTest, ReportsWhatIsMissing)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CTracks tracks;
    tracks.AddChain(2);
    const tElements& all = tracks.All();
    const auto report = [](const char* function, const char* description) {
        return AllOf(HasSubstr(std::string("static bool UElementSelection::") + function + "\n"),
                     HasSubstr(std::string(description) + "\n"));
    };
    constexpr char kEnds[] = "GetFirstLastTrackFromSection(vector<CCompositeGeometry *> &, CCompositeGeometry **, "
                             "CCompositeGeometry **, CJoint **, CJoint **)";
    tracks[1]->Select();
    EXPECT_EXIT(UElementSelection::SelectionConsistsOfSingleLayer(all), ExitedWithCode(0),
                report("SelectionConsistsOfSingleLayer(vector<CCompositeGeometry *> &)",
                       "Failed to retrieve layer from element"));
    CCompositeGeometry* end = nullptr;
    EXPECT_EXIT(UElementSelection::GetFirstLastTrackFromSection(all, nullptr, &end), ExitedWithCode(0),
                report(kEnds, "Invalid handle to track A"));
    EXPECT_EXIT(UElementSelection::GetFirstLastTrackFromSection(all, &end, nullptr), ExitedWithCode(0),
                report(kEnds, "Invalid handle to track B"));
    tracks.Joint(0, 0)->Deactivate(); // connected, as it says, but to nothing
    EXPECT_EXIT(UElementSelection::ConnectedOnlyWithinSelection(tracks[0], nullptr, {}), ExitedWithCode(0),
                report("ConnectedOnlyWithinSelection(CCompositeGeometry *, CJoint **, set<CCompositeGeometry *> &)",
                       "Joint not connected"));
    EXPECT_EXIT(UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(tracks[0], {}), ExitedWithCode(0),
                report("IsTrackDirectlyConnectedToAnyElementInSelection(CCompositeGeometry *, "
                       "set<CCompositeGeometry *> &)",
                       "Joint not connected"));
}

#include "Elements/Utilities/UElementSelection.h"
#include "Layers/CLayer.h"
#include "Tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;
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
    std::for_each(indices.begin(), indices.end(), [&elements](size_t i) { elements[i]->Select(); });
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
}

TEST_F(SelectionOnLayers, FollowsConnections)
{
    mTracks.Joint(1, 0)->DisconnectJoint(); // leaves 0 alone
    SelectOnly(mAll, {3, 0});
    UElementSelection::SelectAllConnected(mAll, mTracks[4]); // through the hidden and the locked
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("1", "2", "7"));
    UElementSelection::SelectAllConnected(mTracks.Some({7, 0}), nullptr); // from the first selected one
    EXPECT_THAT(SelectedNames(mAll), ElementsAre("1", "2", "7"));
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
    const auto at = [&tracks](size_t element, int joint) { return tracks.Joint(element, joint); };
    const struct {
        std::vector<size_t> section;
        CJoint* first; // null for no such end
        CJoint* last;
        bool contiguous;
    } cases[] = {
        {{2, 0, 1}, at(2, 1), at(0, 0), true},  {{0, 2}, at(0, 0), at(2, 0), false}, // a gap
        {{0, 1, 3}, at(0, 0), at(3, 0), false},                                      // three ends, the last one kept
        {{2, 3, 4}, at(2, 0), at(4, 1), false}, // goes on at 3's free joint only, which 4 is not behind
        {{4, 5}, at(4, 0), nullptr, true},      // 5 ends within, so there is one end
        {{6, 7, 8}, nullptr, nullptr, false},   {{0, 1, 6, 7, 8}, at(0, 0), at(1, 1), false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.section));
        const tElements section = tracks.Some(c.section);
        CCompositeGeometry* ends[] = {tracks[0], tracks[0]};
        CJoint* joints[] = {tracks.Joint(0, 0), tracks.Joint(0, 0)};
        EXPECT_EQ(UElementSelection::GetFirstLastTrackFromSection(section, &ends[0], &ends[1], &joints[0], &joints[1]),
                  c.last != nullptr);
        EXPECT_THAT(joints, ElementsAre(c.first, c.last));
        EXPECT_THAT(ends, ElementsAre(c.first != nullptr ? c.first->GetOwner() : nullptr,
                                      c.last != nullptr ? c.last->GetOwner() : nullptr));
        EXPECT_EQ(UElementSelection::IsSelectionContiguous(section), c.contiguous);
    }
    EXPECT_FALSE(UElementSelection::IsSelectionContiguous(tracks.Some({1})));
    EXPECT_TRUE(UElementSelection::IsTrackDirectlyConnectedToAnyElementInSelection(tracks[3], {tracks[0], tracks[4]}));
    CTracks chain;
    chain.AddChain(100000);
    EXPECT_TRUE(UElementSelection::IsSelectionContiguous(chain.All()));
}

#include "Common/Reports.h"
#include "Elements/Utilities/CQueryConnectedItems.h"
#include "Elements/Utilities/UElementJointQueries.h"
#include "Tracks.h"
#include "support/Random.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;
using testing::Pair;
using tTracks = std::vector<UElementJointQueries::tTrack>;

namespace {
/// More elements than calls fit on a stack.
constexpr size_t kMany = 100000;

tTracks TracksBehind(CJoint* joint)
{
    tTracks tracks = {{nullptr, nullptr}}; // what was there before goes
    UElementJointQueries::GetAllTracksWithJointsConnectedToJoint(joint, tracks);
    return tracks;
}

std::vector<CCompositeGeometry*> ConnectedTo(CCompositeGeometry* element)
{
    std::vector<CCompositeGeometry*> connected;
    CQueryConnectedItems(element).GetConnectedItems(connected);
    return connected;
}

/// The walk along tracks step by step, at any cost.
tTracks PlainTracksBehind(CJoint* joint)
{
    tTracks tracks;
    std::vector<CJoint*> level = {joint};
    while (!level.empty()) {
        std::vector<CJoint*> next;
        for (auto at = level.rbegin(); at != level.rend(); ++at) {
            CJoint* current = *at;
            CJoint* partner = current->GetPartner();
            if (partner == nullptr || partner->GetOwner() == joint->GetOwner()) {
                continue;
            }
            const UElementJointQueries::tTrack track(partner->GetOwner(), partner);
            if (std::find(tracks.begin(), tracks.end(), track) == tracks.end()) {
                tracks.push_back(track);
                std::vector<CJoint*> joints;
                UElementJointQueries::GetConnectedJoints(track.first, joints);
                std::copy_if(joints.begin(), joints.end(), std::back_inserter(next),
                             [current](const CJoint* candidate) { return candidate != current; });
            }
        }
        level = next;
    }
    return tracks;
}

} // namespace

TEST(JointQueries, NextConnectedJointLooksAtOneJointOnly)
{
    const struct {
        std::string joints; // f free, c connected
        int index;
        size_t warnings;
    } cases[] = {{"", -1, 0}, {"fc", 0, 0}, {"cff", 1, 0}, {"fcf", 2, 0}, {"cfcf", 3, 0}, {"ff", -1, 1}, {"c", -1, 1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.joints);
        CTracks tracks;
        tracks.Add(static_cast<int>(c.joints.size()));
        for (size_t i = c.joints.find('c'); i != std::string::npos; i = c.joints.find('c', i + 1)) {
            tracks.Add();
            tracks.Connect(0, static_cast<int>(i), tracks.All().size() - 1, 0);
        }
        const CReports reports;
        EXPECT_EQ(UElementJointQueries::GetNextConnectedJointIdx(tracks[0]), c.index);
        EXPECT_EQ(reports.mMessages.size(), c.warnings);
        EXPECT_EQ(UElementJointQueries::GetNumberOfConnectedJoints(tracks[0]), tracks.All().size() - 1);
    }
}

TEST(JointQueries, WalksAlongChainsAndRings)
{
    CTracks chain;
    chain.AddChain(3);
    EXPECT_THAT(TracksBehind(chain.Joint(0, 1)),
                ElementsAre(Pair(chain[1], chain.Joint(1, 0)), Pair(chain[2], chain.Joint(2, 0)),
                            Pair(chain[1], chain.Joint(1, 1)))); // looking back from the third
    EXPECT_THAT(Names(ConnectedTo(chain[1])), ElementsAre("1", "0", "2"));
    chain.Connect(2, 1, 0, 0);
    std::vector<CCompositeGeometry*> tracks;
    UElementJointQueries::GetAllTracksConnectedToJoint(chain.Joint(0, 1), tracks);
    EXPECT_THAT(Names(tracks), ElementsAre("1", "2", "1"));
    EXPECT_THAT(Names(ConnectedTo(chain[0])), ElementsAre("0", "2", "1"));
}

TEST(JointQueries, AgreeWithPlainWalksInAnyOrder)
{
    CRandom random(7);
    const auto below = [&random](size_t limit) { return static_cast<size_t>(random() % limit); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        CTracks tracks;
        std::vector<std::pair<size_t, int>> ends;
        for (size_t i = 0, count = 2 + below(7); i < count; ++i) {
            const int joints = 1 + static_cast<int>(below(8));
            tracks.Add(joints);
            for (int j = 0; j < joints; ++j) {
                ends.emplace_back(i, j);
            }
        }
        // Also elements joined to themselves, and joints whose partner was given to another meanwhile.
        for (size_t i = 0; i < ends.size(); ++i) {
            const auto& a = ends[below(ends.size())];
            const auto& b = ends[below(ends.size())];
            if (a != b) {
                tracks.Connect(a.first, a.second, b.first, b.second);
            }
        }
        for (const auto& [element, joint] : ends) {
            EXPECT_EQ(TracksBehind(tracks.Joint(element, joint)), PlainTracksBehind(tracks.Joint(element, joint)));
        }
    }
}

TEST(JointQueries, TakeLongChains)
{
    CTracks ring;
    ring.AddChain(kMany);
    EXPECT_EQ(ConnectedTo(ring[0]), ring.All());
    ring.Connect(kMany - 1, 1, 0, 0);
    EXPECT_EQ(TracksBehind(ring.Joint(0, 1)).size(), 2 * (kMany - 1) - 1); // all but the last also looking back
}

#include "Common/Reports.h"
#include "Elements/Utilities/CQueryConnectedItems.h"
#include "Elements/Utilities/UElementJointQueries.h"
#include "Tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
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
        for (; !level.empty();) {
            CJoint* current = level.back();
            level.pop_back();
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

/// The search for connected elements with a call for each.
void PlainConnectedTo(CCompositeGeometry* element, std::set<CCompositeGeometry*>& visited,
                      std::vector<CCompositeGeometry*>& out)
{
    out.push_back(element);
    visited.insert(element);
    std::vector<CJoint*> joints;
    UElementJointQueries::GetConnectedJoints(element, joints);
    for (const CJoint* joint : joints) {
        CCompositeGeometry* neighbour = joint->GetPartner()->GetOwner();
        if (visited.count(neighbour) == 0) {
            PlainConnectedTo(neighbour, visited, out);
        }
    }
}
} // namespace

TEST(JointQueries, NextConnectedJointLooksAtOneJointOnly)
{
    const std::string function = "static int UElementJointQueries::GetNextConnectedJointIdx(CCompositeGeometry *): ";
    const std::string none = function + "No connected joint found for 0?";
    const std::string several = function + "More than 1 connected joint found for 0?";
    const struct {
        std::string joints; // f free, c connected
        int index;
        std::string warning;
    } cases[] = {{"", -1, ""},     {"fc", 0, ""},       {"cff", 1, ""},       {"fcf", 2, ""},    {"cfcf", 3, ""},
                 {"ff", -1, none}, {"cc", -1, several}, {"cfc", -1, several}, {"c", -1, several}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.joints);
        CTracks tracks;
        tracks.Add(static_cast<int>(c.joints.size()));
        for (size_t i = 0; i < c.joints.size(); ++i) {
            if (c.joints[i] == 'c') {
                const size_t other = tracks.All().size();
                tracks.Add();
                tracks.Connect(0, static_cast<int>(i), other, 0);
            }
        }
        const CReports reports;
        EXPECT_EQ(UElementJointQueries::GetNextConnectedJointIdx(tracks[0]), c.index);
        ASSERT_EQ(reports.mMessages.size(), c.warning.empty() ? 0U : 1U);
        if (!c.warning.empty()) {
            EXPECT_THAT(reports.mMessages[0], Pair(Platform::eReportLevel::kWarning, c.warning));
        }
        const auto connected = std::count(c.joints.begin(), c.joints.end(), 'c');
        EXPECT_EQ(UElementJointQueries::GetNumberOfConnectedJoints(tracks[0]), connected);
        EXPECT_EQ(UElementJointQueries::GetNumberOfUnconnectedJoints(tracks[0]), std::ssize(c.joints) - connected);
    }
}

TEST(JointQueries, FindsJointsOfAnElement)
{
    CTracks tracks;
    CCompositeGeometry* element = tracks.Add(5);
    const double xs[] = {3, -2, 7, 7, -2};
    for (int i = 0; i < 5; ++i) {
        tracks.Joint(0, i)->GetPosition().x = xs[i];
    }
    EXPECT_EQ(UElementJointQueries::GetJointWithMinX(element), tracks.Joint(0, 1)); // the earlier of two
    EXPECT_EQ(UElementJointQueries::GetJointWithMaxX(element), tracks.Joint(0, 2));

    std::vector<CJoint*> joints;
    element->GetJoints(joints, true, false);
    UElementJointQueries::ExcludeJointFromJointVector(joints, tracks.Joint(0, 2), joints);
    EXPECT_THAT(joints, ElementsAre(tracks.Joint(0, 0), tracks.Joint(0, 1), tracks.Joint(0, 3), tracks.Joint(0, 4)));
    CJoint* disallowed = element->GetBIGAtIndex(2)->GetJoint(1);
    EXPECT_EQ(UElementJointQueries::GetIndexOfJointInElementJointVector(element, disallowed), -1);
    EXPECT_EQ(UElementJointQueries::GetOppositeJoint(tracks.Joint(0, 3)), tracks.Joint(0, 2));
    EXPECT_EQ(UElementJointQueries::GetOppositeJoint(tracks.Joint(0, 4)), disallowed);
    CJoint foreign;
    EXPECT_EQ(UElementJointQueries::GetOppositeJoint(&foreign), nullptr);
}

TEST(JointQueries, WalksAlongChainsAndRings)
{
    CTracks chain;
    chain.AddChain(3);
    EXPECT_THAT(TracksBehind(chain.Joint(0, 1)),
                ElementsAre(Pair(chain[1], chain.Joint(1, 0)), Pair(chain[2], chain.Joint(2, 0)),
                            Pair(chain[1], chain.Joint(1, 1)))); // looking back from the third
    EXPECT_THAT(TracksBehind(chain.Joint(0, 0)), ElementsAre());
    EXPECT_THAT(Names(ConnectedTo(chain[1])), ElementsAre("1", "0", "2"));

    chain.Connect(2, 1, 0, 0);
    std::vector<CCompositeGeometry*> tracks;
    UElementJointQueries::GetAllTracksConnectedToJoint(chain.Joint(0, 1), tracks);
    EXPECT_THAT(Names(tracks), ElementsAre("1", "2", "1"));
    CQueryConnectedItems query(chain[0]);
    tracks.clear();
    query.GetConnectedItems(tracks);
    query.GetConnectedItems(tracks); // remembers where it was
    EXPECT_THAT(Names(tracks), ElementsAre("0", "2", "1", "0"));
}

TEST(JointQueries, AgreeWithPlainWalksInAnyOrder)
{
    std::mt19937 random(7);
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
        for (CCompositeGeometry* element : tracks.All()) {
            std::set<CCompositeGeometry*> visited;
            std::vector<CCompositeGeometry*> expected;
            PlainConnectedTo(element, visited, expected);
            EXPECT_EQ(ConnectedTo(element), expected);
        }
    }
}

TEST(JointQueries, TakeLongChainsAndManyJoints)
{
    CTracks ring;
    ring.AddChain(kMany);
    EXPECT_EQ(ConnectedTo(ring[0]), ring.All());
    ring.Connect(kMany - 1, 1, 0, 0);
    EXPECT_EQ(ConnectedTo(ring[1]).size(), kMany);
    EXPECT_EQ(TracksBehind(ring.Joint(0, 1)).size(), 2 * (kMany - 1) - 1); // all but the last also looking back

    CTracks pair; // two elements joined in very many places; a document may hold more components than are appended
    pair.Add();
    constexpr int kJoints = 50000;
    for (size_t i = 1; i <= 2; ++i) {
        CCompositeGeometry* element = pair.Add(0);
        for (int joint = 0; joint < kJoints; joint += 2) {
            element->GetComponents().push_back(new CStraightBIG);
            element->GetComponents().back()->SetJointOwner(element);
        }
    }
    pair.Connect(0, 0, 1, 0);
    for (int i = 1; i < kJoints; ++i) {
        pair.Connect(1, i, 2, i);
    }
    EXPECT_EQ(TracksBehind(pair.Joint(0, 0)).size(), 1U + 2U * (kJoints - 1));
}

TEST(JointQueriesDeathTest, ReportsWhatLeadsNowhere)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    CTracks tracks;
    tracks.AddChain(1);
    CJoint stray;
    const auto report = [](const char* function, const char* description) {
        return AllOf(HasSubstr(function), HasSubstr(description));
    };
    constexpr char kWalk[] = "static void UElementJointQueries::GetAllTracksWithJointsConnectedToJoint(CJoint *, "
                             "vector<pair<CCIG *, CJoint *> > &)\n";
    constexpr char kQuery[] =
        "void CQueryConnectedItems::FindAllConnectedItems(vector<CCompositeGeometry *> &, CCompositeGeometry *)\n";
    EXPECT_EXIT(TracksBehind(nullptr), ExitedWithCode(0),
                report(kWalk, "Failed to fetch CJoint instance from stack\n"));
    tracks.Joint(0, 1)->Deactivate(); // connected, as it says, but to nothing
    EXPECT_EXIT(ConnectedTo(tracks[0]), ExitedWithCode(0), report(kQuery, "No element connected at current joint\n"));
    stray.ConnectToJoint(tracks.Joint(0, 1));
    EXPECT_EXIT(ConnectedTo(tracks[0]), ExitedWithCode(0), report(kQuery, "No element connected at current joint\n"));
    EXPECT_EXIT(TracksBehind(tracks.Joint(0, 1)), ExitedWithCode(0),
                report(kWalk, "Failed to fetch track from neighbour joint\n"));
}

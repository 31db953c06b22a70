#include "Articles.h"
#include "CPlan.h"
#include "CTrackLayer.h"
#include "KVUNum/Angles.h"
#include "Layouts.h"
#include "TerminusScenery.h"

#include <cmath>

using namespace Terminus;
using namespace TrackSystem;

namespace {
constexpr double kEast = 0.0;
constexpr double kWest = 180.0;

constexpr double kSlope = 0.03;        ///< of the helix
constexpr int kTurnsOfHelix = 4;       ///< and a half
constexpr double kBendRadius = 1500.0; ///< of the bends half-way along the middle

/// The main tracks, northern and southern, where one part of the layout hands them on to the next.
struct tMainLine {
    tTrackEnd north;
    tTrackEnd south;
};

/// A track of the terminus, up to its bumper.
void LayPlatformTrack(CPlan& plan, const tTrackEnd& from)
{
    CTrackLayer(plan, from).LayUntil(kBumpers).Finish(kBumper);
}

/// Throat and platform tracks, laid from east to west. Each main track crosses the other one on its way into the ladder
/// on the far side, so all platforms can be reached from both.
void LayTerminus(CPlan& plan)
{
    CTrackLayer north(plan, {{kThroat, kMain, 0.0}, kWest});
    CTrackLayer south(plan, {{kThroat, kMain + kSpacing, 0.0}, kWest});

    north.LayTurnout(kTurnoutLeft);
    south.Lay(kStraight185);
    const tTrackEnd toLowerLadder = south.LayThrough(kSlipLeft, 0, 1).back();
    north.Lay(kStraight231).Lay(kStraight185);
    south.LayTurnout(kTurnoutRight);
    const tTrackEnd toUpperLadder = north.LayThrough(kSlipRight, 0, 1).back();
    south.Lay(kStraight231);
    LayPlatformTrack(plan, north.GetEnd());
    LayPlatformTrack(plan, south.GetEnd());

    CTrackLayer upper(plan, toUpperLadder);
    LayPlatformTrack(plan, upper.Lay(kStraight50).LayTurnout(kTurnoutLeft));
    LayPlatformTrack(plan, upper.Lay(kStraight54).Lay(kStraight240).LayTurnout(kTurnoutLeft));
    LayPlatformTrack(plan, upper.Lay(kStraight54).LayTurnout(kTurnoutLeft));
    LayPlatformTrack(plan, upper.Lay(kStraight54).Lay(kStraight240).Left(kCounterCurve).GetEnd());

    CTrackLayer lower(plan, toLowerLadder);
    LayPlatformTrack(plan, lower.Lay(kStraight50).Lay(kStraight240).LayTurnout(kTurnoutRight));
    LayPlatformTrack(plan, lower.Lay(kStraight54).LayTurnout(kTurnoutRight));
    LayPlatformTrack(plan, lower.Lay(kStraight54).Lay(kStraight240).Right(kCounterCurve).GetEnd());
}

/// Engine depot, south of the main line.
void LayDepot(CPlan& plan, const tTrackEnd& from)
{
    CTrackLayer lead(plan, from);
    CTrackLayer storage(plan, lead.Lay(kStraight50).LayTurnout(kTurnoutLeft));
    storage.Lay(kStraight371, 2).Finish(kBumper);
    lead.Right(kCounterCurve).Lay(kStraight185, 2).Left(kCounterCurve, 2);

    // The lead arrives eastwards, so turntable and shed lie as they are drawn.
    const size_t depot = plan.Count();
    const CPoint middle = lead.GetEnd().place + CPoint(kTurntableRadius, 0.0, 0.0);
    std::vector<tTrackEnd> stalls = lead.LayThrough(kTurntable, 0, 1);
    stalls.push_back(lead.GetEnd());
    for (const tTrackEnd& stall : stalls) {
        CTrackLayer(plan, stall).Lay(kStraight240).Lay(kStraight93).Finish(kBumper);
    }
    plan.UseLayer(kBuildings);
    const double halfAngle = kTurntableStalls * kTurntablePitch / 2.0 * kRadiansPerDegree;
    const double front = (kRoundhouse.b - kRoundhouse.a) * std::cos(halfAngle);
    plan.Place(kRoundhouse, middle.x + (front + kRoundhouse.b) / 2.0, middle.y);
    plan.Place(kCoalBunker, middle.x - 330.0, middle.y + 70.0);
    plan.GroupSince(depot);
    plan.UseLayer(kLowerTracks);
}

/// Double track from the throat eastwards, around and back along the middle. @return its ends before the helix
tMainLine LayMainLine(CPlan& plan)
{
    CTrackLayer north(plan, {{kThroat, kMain, 0.0}, kEast});
    CTrackLayer south(plan, {{kThroat, kMain + kSpacing, 0.0}, kEast});
    LayDepot(plan, south.LayTurnout(kTurnoutRight));
    south.Lay(kStraight371, 3).Lay(kStraight185);
    north.Lay(kStraight371, 4);
    // The northern track is the inner one; behind the curve it is the southern.
    north.Left(kCurve3, 6).Lay(kStraight371, 4);
    south.Left(kCurve4, 6).Lay(kStraight371, 4);
    constexpr double kHalf = kSpacing / 2.0;
    north.LayFlexible({{kBendRadius - kHalf, -15.0}, {kBendRadius + kHalf, 15.0}}).Lay(kStraight371, 5);
    south.LayFlexible({{kBendRadius + kHalf, -15.0}, {kBendRadius - kHalf, 15.0}}).Lay(kStraight371, 5);
    return {south.GetEnd(), north.GetEnd()};
}

/// The helix: both tracks climb by the same height in each turn, at kSlope on the inner one. @return its upper ends
tMainLine LayHelix(CPlan& plan, const tMainLine& from)
{
    const size_t first = plan.Count();
    CTrackLayer inner(plan, from.north);
    CTrackLayer outer(plan, from.south);
    const auto ease = [&] {
        inner.SetSlope(kSlope / 2.0);
        outer.SetSlope(kSlope / 2.0);
        inner.Lay(kStraight371);
        outer.Lay(kStraight371);
    };
    ease();
    inner.SetSlope(kSlope);
    outer.SetSlope(kSlope * kRadius3 / kRadius4);
    inner.Right(kCurve3, 12 * kTurnsOfHelix + 6);
    outer.Right(kCurve4, 12 * kTurnsOfHelix + 6);
    ease();
    plan.GroupSince(first);
    return {outer.GetEnd(), inner.GetEnd()};
}

/// The station in the hills, and the descent to the quarry.
void LayUpperStation(CPlan& plan, const tMainLine& from)
{
    CTrackLayer north(plan, from.north);
    CTrackLayer south(plan, from.south);
    north.Lay(kStraight371, 2);
    south.Lay(kStraight371, 2);

    north.Lay(kStraight185).LayTrailing(kTurnoutLeft);
    south.LayTurnout(kTurnoutLeft);
    south.Lay(kStraight185);
    north.LayTurnout(kTurnoutRight);
    north.Lay(kStraight185);
    south.Lay(kStraight185).LayTrailing(kTurnoutRight);

    CTrackLayer ladder(plan, south.LayTurnout(kTurnoutRight));
    CTrackLayer third(plan, ladder.Lay(kStraight50).LayTurnout(kTurnoutLeft));
    ladder.Lay(kStraight54);
    CTrackLayer fourth(plan, ladder.Lay(kStraight240).LayTurnout(kTurnoutLeft));
    south.LayUntil(kUpperBumpers).Finish(kBumper);
    third.LayUntil(kUpperBumpers).Finish(kBumper);
    fourth.LayUntil(kUpperBumpers).Finish(kBumper);
    north.LayUntil(kWidth - 60.0); // up to the edge, where a module is to follow: the one open end

    ladder.SetSlope(-0.02);
    ladder.LayFlexible({{900.0, 20.0}, {900.0, -15.0}}).LayFlexible({{1100.0, -20.0}}).Lay(kStraight185, 2);
    ladder.SetSlope(0.0);
    ladder.Lay(kStraight371, 2).Finish(kBumper);
}
} // namespace

std::unique_ptr<CPlan> MakeTerminusLayout()
{
    auto plan = std::make_unique<CPlan>(
        "François Œttinger & Åse Brøndal",
        "Kopfbahnhof Dünkelsbrück mit Bw, doppelgleisiger Wendel und Bergbahnhof Hohenquirl.\rAusbaustufe 2: "
        "Verlängerung nach Osten über das Modul am Bergbahnhof.",
        "2.3 (März)", kWidth, kHeight,
        std::initializer_list<tLayerSetting>{{kGround, true},
                                             {kRoads},
                                             {kLowerTracks},
                                             {kHelixTracks},
                                             {kUpperTracks},
                                             {kPlatforms},
                                             {kBuildings},
                                             {kPlants},
                                             {kSignals},
                                             {kCatenary, false, false},
                                             {kTexts},
                                             {kNotes, true, false}});
    ShapeGround(*plan);
    plan->UseLayer(kLowerTracks);
    LayTerminus(*plan);
    const tMainLine below = LayMainLine(*plan);
    plan->UseLayer(kHelixTracks);
    const tMainLine above = LayHelix(*plan, below);
    plan->UseLayer(kUpperTracks);
    LayUpperStation(*plan, above);
    BuildTerminus(*plan);
    BuildTown(*plan);
    BuildCountryside(*plan);
    Equip(*plan);
    Plant(*plan);
    Label(*plan);
    return plan;
}

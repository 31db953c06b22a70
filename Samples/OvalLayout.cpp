#include "Articles.h"
#include "CPlan.h"
#include "CTrackLayer.h"
#include "Layouts.h"

using namespace TrackSystem;

namespace {
constexpr double kEast = 0.0;
constexpr double kFrontLeft = 570.0; ///< where the front straight begins
constexpr double kFront = 1060.0;    ///< its y
constexpr double kBack = kFront - 2.0 * kRadius2;

void LayTracks(CPlan& plan)
{
    // Anti-clockwise along the front, where the passing loop lies inside.
    CTrackLayer oval(plan, {{kFrontLeft, kFront, 0.0}, kEast});
    oval.Lay(kStraight185);
    CTrackLayer loop(plan, oval.LayTurnout(kTurnoutLeft));
    oval.Lay(kStraight185, 6);
    oval.LayTrailing(kTurnoutRight);
    oval.Lay(kStraight185);
    oval.Left(kCurve2, 6);

    // Along the back, with the siding of the sawmill.
    oval.Lay(kStraight371, 2);
    CTrackLayer siding(plan, oval.LayTurnout(kTurnoutLeft));
    oval.Lay(kStraight371, 2).Lay(kStraight185);
    oval.Left(kCurve2, 6);

    loop.Lay(kStraight50).Right(kCounterCurve).Lay(kStraight371, 2).Right(kCounterCurve).Lay(kStraight50);
    siding.Lay(kStraight50).Right(kCounterCurve).Lay(kStraight371).Lay(kStraight93).Finish(kBumper);
}

void Build(CPlan& plan)
{
    const size_t station = plan.Count();
    plan.Rectangle("Bahnsteig 1", 1000.0, kFront + 24.0, 920.0, 56.0, 0xC8C0B0);
    plan.Rectangle("Bahnsteig 2", 1130.0, kFront - kSpacing - 74.0, 660.0, 50.0, 0xC8C0B0);
    plan.Place(kSmallStation, 1460.0, kFront + 132.0);
    plan.Place(kSignalBox, 850.0, kFront + 72.0);
    plan.GroupSince(station);

    plan.Place(kGoodsShed, 1090.0, kBack + 140.0);
    plan.Place(kSignal, 2440.0, kFront + 34.0);
    plan.Place(kSignal, 560.0, kFront - 34.0, 180.0);
}

void Plant(CPlan& plan)
{
    plan.Area("Teich", {{1950, 560}, {2080, 520}, {2230, 565}, {2250, 660}, {2120, 720}, {1970, 670}}, 0x7FB2D8);
    for (const tSpot& place : {tSpot{2290, 560}, tSpot{2310, 690}, tSpot{1900, 620}}) {
        plan.Place(kBeech, place.x, place.y);
    }
    for (const tSpot& place : {tSpot{420, 620}, tSpot{475, 560}, tSpot{485, 680}}) {
        plan.Place(kSpruce, place.x, place.y);
    }
}

void Label(CPlan& plan)
{
    plan.Text("Krähenwinkl", 1610.0, kFront + 110.0, 36);
    plan.Text("Gleis 1", 1010.0, kFront + 40.0, 18);
    plan.Text("Überholgleis", 1400.0, kFront - kSpacing - 60.0, 18);
    plan.Text("Sägewerk Höß", 990.0, kBack + 200.0, 24);
    plan.Text("Mühlweiher", 2030.0, 610.0, 24);
}
} // namespace

std::unique_ptr<CPlan> MakeOvalLayout()
{
    auto plan = std::make_unique<CPlan>(
        "Jürgen Sänftl", "Oval mit Überholgleis und Anschluss zum Sägewerk, für den Anfang auf einer Platte", "1.2",
        3000, 1300, std::initializer_list<tLayerSetting>{{"Gleise"}, {"Gebäude"}, {"Landschaft"}, {"Beschriftung"}});
    LayTracks(*plan);
    plan->UseLayer("Gebäude");
    Build(*plan);
    plan->UseLayer("Landschaft");
    Plant(*plan);
    plan->UseLayer("Beschriftung");
    Label(*plan);
    return plan;
}

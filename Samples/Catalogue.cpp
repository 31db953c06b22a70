#include "Catalogue.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using namespace TrackSystem;

namespace {
constexpr double kRadius1 = kRadius2 - kSpacing;
constexpr double kRadius5 = kRadius4 + kSpacing;
constexpr double kRadius6 = kRadius5 + kSpacing;
constexpr double kWideRadius = 912.0;
constexpr double kSlenderRadius = 900.0;
constexpr double kSlenderAngle = 10.0;

constexpr double kNarrowTurnoutRadius = 410.0;
constexpr double kNarrowSpacing = 30.0;
/// The straight route of that system's turnouts, its grid.
constexpr double kNarrowUnit = kNarrowTurnoutRadius * kHalfTangent + kNarrowSpacing / (2.0 * kSine) * kCosine;
constexpr double kNarrowRadius1 = 195.0;
constexpr double kNarrowRadius2 = kNarrowRadius1 + kNarrowSpacing;
constexpr double kNarrowRadius3 = kNarrowRadius2 + kNarrowSpacing;
static_assert(kNarrowLibrary.spacing == kNarrowSpacing);

/// Articles that layouts are built from.
constexpr const tArticle* kInLayouts[] = {
    &kStraight371, &kStraight240, &kStraight231, &kStraight185,  &kStraight93,  &kStraight54,   &kStraight50,
    &kCurve2,      &kCurve3,      &kCurve4,      &kCounterCurve, &kTurnoutLeft, &kTurnoutRight, &kSlipLeft,
    &kSlipRight,   &kBumper,      &kTurntable,   &kRoundhouse,   &kTownStation, &kSmallStation, &kGoodsShed,
    &kSignalBox,   &kCoalBunker,  &kTownHouse,   &kCornerHouse,  &kFarmHouse,   &kChurch,       &kCar,
    &kBench,       &kLamp,        &kMast,        &kSignal,       &kSpruce,      &kBeech};

/// The rest of the product lines.
// clang-format off
constexpr tArticle kFurther[] = {
    {&kTrackLibrary, "3102", "Gerades Gleis 556,4 mm", 949, &Shapes::Straight, 3.0 * kUnit},
    {&kTrackLibrary, "3111", "Trenngleis 185,5 mm, einseitig isoliert", 549, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3112", "Entkupplungsgleis 185,5 mm mit Antrieb", 2390, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3113", "Anschlussgleis 185,5 mm", 799, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3114", "Schaltgleis 185,5 mm", 1290, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3115", "Meldegleis 185,5 mm, beidseitig isoliert", 649, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3116", "Bahnübergang 185,5 mm, Bohlen", 1690, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3117", "Brückengleis 185,5 mm", 1190, &Shapes::Straight, kUnit},
    {&kTrackLibrary, "3121", "Anschlussgleis 92,7 mm", 749, &Shapes::Straight, kUnit / 2.0},
    {&kTrackLibrary, "3122", "Trenngleis 92,7 mm, einseitig isoliert", 499, &Shapes::Straight, kUnit / 2.0},
    {&kTrackLibrary, "3125", "Gerades Gleis 61,8 mm", 279, &Shapes::Straight, kUnit / 3.0},
    {&kTrackLibrary, "3126", "Gerades Gleis 46,4 mm", 269, &Shapes::Straight, kUnit / 4.0},
    {&kTrackLibrary, "3127", "Gerades Gleis 23,2 mm", 249, &Shapes::Straight, kUnit / 8.0},
    {&kTrackLibrary, "3132", "Ausgleichsstück 30 mm", 249, &Shapes::Straight, 30.0},
    {&kTrackLibrary, "3135", "Ausziehgleis, 88 bis 120 mm", 1890, &Shapes::Straight, 104.0},
    {&kTrackLibrary, "3190", "Gebogenes Gleis R1 360 mm 30°", 459, &Shapes::Curve, kRadius1, 30.0},
    {&kTrackLibrary, "3191", "Gebogenes Gleis R1 360 mm 15°", 369, &Shapes::Curve, kRadius1, 15.0},
    {&kTrackLibrary, "3192", "Gebogenes Gleis R1 360 mm 7,5°", 329, &Shapes::Curve, kRadius1, 7.5},
    {&kTrackLibrary, "3207", "Gebogenes Gleis R2 422 mm 7,5°", 339, &Shapes::Curve, kRadius2, 7.5},
    {&kTrackLibrary, "3215", "Gebogenes Gleis R2 422 mm 15°", 379, &Shapes::Curve, kRadius2, 15.0},
    {&kTrackLibrary, "3231", "Gebogenes Anschlussgleis R2 422 mm 30°", 899, &Shapes::Curve, kRadius2, 30.0},
    {&kTrackLibrary, "3232", "Gebogenes Schaltgleis R2 422 mm 30°", 1390, &Shapes::Curve, kRadius2, 30.0},
    {&kTrackLibrary, "3307", "Gebogenes Gleis R3 484 mm 7,5°", 349, &Shapes::Curve, kRadius3, 7.5},
    {&kTrackLibrary, "3315", "Gebogenes Gleis R3 484 mm 15°", 399, &Shapes::Curve, kRadius3, 15.0},
    {&kTrackLibrary, "3331", "Gebogenes Anschlussgleis R3 484 mm 30°", 939, &Shapes::Curve, kRadius3, 30.0},
    {&kTrackLibrary, "3407", "Gebogenes Gleis R4 546 mm 7,5°", 359, &Shapes::Curve, kRadius4, 7.5},
    {&kTrackLibrary, "3415", "Gebogenes Gleis R4 546 mm 15°", 419, &Shapes::Curve, kRadius4, 15.0},
    {&kTrackLibrary, "3431", "Gebogenes Anschlussgleis R4 546 mm 30°", 979, &Shapes::Curve, kRadius4, 30.0},
    {&kTrackLibrary, "3507", "Gegenbogen 530 mm 7,5°", 349, &Shapes::Curve, kTurnoutRadius, 7.5},
    {&kTrackLibrary, "3510", "Gegenbogen 900 mm 10°, schlanke Weichen", 449, &Shapes::Curve, kSlenderRadius, kSlenderAngle},
    {&kTrackLibrary, "3530", "Gebogenes Gleis R5 608 mm 30°", 609, &Shapes::Curve, kRadius5, 30.0},
    {&kTrackLibrary, "3531", "Gebogenes Gleis R5 608 mm 15°", 449, &Shapes::Curve, kRadius5, 15.0},
    {&kTrackLibrary, "3532", "Gebogenes Gleis R5 608 mm 7,5°", 379, &Shapes::Curve, kRadius5, 7.5},
    {&kTrackLibrary, "3540", "Gebogenes Gleis R6 670 mm 30°", 649, &Shapes::Curve, kRadius6, 30.0},
    {&kTrackLibrary, "3541", "Gebogenes Gleis R6 670 mm 15°", 479, &Shapes::Curve, kRadius6, 15.0},
    {&kTrackLibrary, "3550", "Großer Bogen 912 mm 15°", 529, &Shapes::Curve, kWideRadius, 15.0},
    {&kTrackLibrary, "3551", "Großer Bogen 912 mm 7,5°", 429, &Shapes::Curve, kWideRadius, 7.5},
    {&kTrackLibrary, "3603", "Weiche links 15° mit Unterflurantrieb", 4795, &Shapes::TurnoutLeft},
    {&kTrackLibrary, "3604", "Weiche rechts 15° mit Unterflurantrieb", 4795, &Shapes::TurnoutRight},
    {&kTrackLibrary, "3611", "Schlanke Weiche links 10°", 3690, &Shapes::Turnout, kSlenderRadius, -kSlenderAngle},
    {&kTrackLibrary, "3612", "Schlanke Weiche rechts 10°", 3690, &Shapes::Turnout, kSlenderRadius, kSlenderAngle},
    {&kTrackLibrary, "3613", "Schlanke Weiche links 10° mit Unterflurantrieb", 5690, &Shapes::Turnout, kSlenderRadius, -kSlenderAngle},
    {&kTrackLibrary, "3614", "Schlanke Weiche rechts 10° mit Unterflurantrieb", 5690, &Shapes::Turnout, kSlenderRadius, kSlenderAngle},
    {&kTrackLibrary, "3621", "Bogenweiche links R2/R3 30°", 4190, &Shapes::CurvedTurnout, kRadius2, -30.0},
    {&kTrackLibrary, "3622", "Bogenweiche rechts R2/R3 30°", 4190, &Shapes::CurvedTurnout, kRadius2, 30.0},
    {&kTrackLibrary, "3623", "Bogenweiche links R3/R4 30°", 4390, &Shapes::CurvedTurnout, kRadius3, -30.0},
    {&kTrackLibrary, "3624", "Bogenweiche rechts R3/R4 30°", 4390, &Shapes::CurvedTurnout, kRadius3, 30.0},
    {&kTrackLibrary, "3630", "Dreiwegweiche 15°", 5450, &Shapes::ThreeWayTurnout, kTurnoutRadius, kTurnoutAngle},
    {&kTrackLibrary, "3631", "Dreiwegweiche 15° mit Unterflurantrieben", 8950, &Shapes::ThreeWayTurnout, kTurnoutRadius, kTurnoutAngle},
    {&kTrackLibrary, "3635", "Außenbogenweiche 912 mm, zweimal 7,5°", 3350, &Shapes::Wye, kWideRadius, 7.5},
    {&kTrackLibrary, "3643", "Einfache Kreuzungsweiche links 15°", 5650, &Shapes::SingleSlip, -kTurnoutAngle},
    {&kTrackLibrary, "3644", "Einfache Kreuzungsweiche rechts 15°", 5650, &Shapes::SingleSlip, kTurnoutAngle},
    {&kTrackLibrary, "3651", "Kreuzung links 15°", 2190, &Shapes::LadderCrossing, -kTurnoutAngle},
    {&kTrackLibrary, "3652", "Kreuzung rechts 15°", 2190, &Shapes::LadderCrossing, kTurnoutAngle},
    {&kTrackLibrary, "3653", "Kreuzung 30°", 1990, &Shapes::Crossing, 30.0, 120.0},
    {&kTrackLibrary, "3654", "Kreuzung 90°", 1890, &Shapes::Crossing, 90.0, 100.0},
    {&kTrackLibrary, "3701", "Prellbock, beleuchtet", 1695, &Shapes::Bumper, 60.0},
    {&kTrackLibrary, "3702", "Gleisabschluss aus Schwellen", 695, &Shapes::Bumper, 45.0},
    {&kTrackLibrary, "3801", "Drehscheibe mit 5 Abgängen, digital gesteuert", 41900, &Shapes::Turntable, 0.0, 0.0, 0x9A9A90},
    {&kTrackLibrary, "3900", "Flexgleis 900 mm, Holzschwellen", 890, &Shapes::Flexible, 900.0},
    {&kTrackLibrary, "3901", "Flexgleis 900 mm, Betonschwellen", 940, &Shapes::Flexible, 900.0},
    {&kTrackLibrary, "3902", "Flexgleis 900 mm, Stahlschwellen", 990, &Shapes::Flexible, 900.0},
    {&kTrackLibrary, "3910", "Flexgleis 450 mm, Holzschwellen", 520, &Shapes::Flexible, 450.0},

    {&kNarrowLibrary, "100", "Gerades Gleis 220 mm", 449, &Shapes::Straight, 2.0 * kNarrowUnit},
    {&kNarrowLibrary, "101", "Gerades Gleis 110 mm", 299, &Shapes::Straight, kNarrowUnit},
    {&kNarrowLibrary, "102", "Gerades Gleis 55 mm", 259, &Shapes::Straight, kNarrowUnit / 2.0},
    {&kNarrowLibrary, "103", "Gerades Gleis 27,5 mm", 239, &Shapes::Straight, kNarrowUnit / 4.0},
    {&kNarrowLibrary, "110", "Entkupplungsgleis 110 mm", 1990, &Shapes::Straight, kNarrowUnit},
    {&kNarrowLibrary, "201", "Gebogenes Gleis R1 195 mm 30°", 329, &Shapes::Curve, kNarrowRadius1, 30.0},
    {&kNarrowLibrary, "202", "Gebogenes Gleis R1 195 mm 15°", 289, &Shapes::Curve, kNarrowRadius1, 15.0},
    {&kNarrowLibrary, "211", "Gebogenes Gleis R2 225 mm 30°", 349, &Shapes::Curve, kNarrowRadius2, 30.0},
    {&kNarrowLibrary, "212", "Gebogenes Gleis R2 225 mm 15°", 299, &Shapes::Curve, kNarrowRadius2, 15.0},
    {&kNarrowLibrary, "221", "Gebogenes Gleis R3 255 mm 30°", 369, &Shapes::Curve, kNarrowRadius3, 30.0},
    {&kNarrowLibrary, "222", "Gebogenes Gleis R3 255 mm 15°", 319, &Shapes::Curve, kNarrowRadius3, 15.0},
    {&kNarrowLibrary, "230", "Gegenbogen 410 mm 15°", 329, &Shapes::Curve, kNarrowTurnoutRadius, kTurnoutAngle},
    {&kNarrowLibrary, "301", "Weiche links 15°", 2290, &Shapes::Turnout, kNarrowTurnoutRadius, -kTurnoutAngle},
    {&kNarrowLibrary, "302", "Weiche rechts 15°", 2290, &Shapes::Turnout, kNarrowTurnoutRadius, kTurnoutAngle},
    {&kNarrowLibrary, "311", "Bogenweiche links R1/R2 30°", 3390, &Shapes::CurvedTurnout, kNarrowRadius1, -30.0},
    {&kNarrowLibrary, "312", "Bogenweiche rechts R1/R2 30°", 3390, &Shapes::CurvedTurnout, kNarrowRadius1, 30.0},
    {&kNarrowLibrary, "320", "Dreiwegweiche 15°", 4490, &Shapes::ThreeWayTurnout, kNarrowTurnoutRadius, kTurnoutAngle},
    {&kNarrowLibrary, "330", "Kreuzung 30°", 1690, &Shapes::Crossing, 30.0, kNarrowUnit},
    {&kNarrowLibrary, "400", "Prellbock für Güterschuppen", 795, &Shapes::Bumper, 40.0},
    {&kNarrowLibrary, "500", "Flexgleis 700 mm", 690, &Shapes::Flexible, 700.0},
};
// clang-format on
} // namespace

std::vector<tArticle> ArticlesOf(const tLibrary& library)
{
    std::vector<tArticle> articles;
    for (const tArticle* article : kInLayouts) {
        if (article->library == &library) {
            articles.push_back(*article);
        }
    }
    std::copy_if(std::begin(kFurther), std::end(kFurther), std::back_inserter(articles),
                 [&library](const tArticle& article) { return article.library == &library; });
    std::sort(articles.begin(), articles.end(),
              [](const tArticle& left, const tArticle& right) { return std::strcmp(left.number, right.number) < 0; });
    return articles;
}

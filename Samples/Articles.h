// The articles that the samples are built from. Makers, libraries and numbers are invented.
#pragma once

#include "TrackLibraries/Utilities/ULibraryConstants.h"
#include "TrackSystem.h"
#include "UnitLength/URailConstants.h"

#include <memory>

class CCompositeGeometry;

/// A track library, the name of whose file is its own. Lengths in mm.
struct tLibrary {
    const char* name; ///< texts here are UTF-8
    const char* manufacturer;
    int currency;
    tRailSetContentType contentType;
    int modelScale;
    double gauge;
    double trackbed;
    double spacing; ///< of parallel tracks
};

/// An article of a library.
struct tArticle {
    const tLibrary* library;
    const char* number;
    const char* description;
    int price; ///< hundredths
    /// Appends the article's components to an element. What `a` and `b` measure is up to the shape.
    void (*shape)(CCompositeGeometry& element, const tArticle& article);
    double a = 0.0;
    double b = 0.0;
    unsigned color = 0; ///< 0xRRGGBB; the fill colour of the element
};

/// A new element of that article, unturned, with its box beginning at (0, 0).
std::unique_ptr<CCompositeGeometry> NewElement(const tArticle& article);

/// Shapes. Joints are numbered in the order in which CCompositeGeometry::GetJoints lists them.
namespace Shapes {
/// Straight track of length `a`; joints 0 and 1 are its ends.
void Straight(CCompositeGeometry& element, const tArticle& article);
/// Track of radius `a` that turns by `b` degrees to the right on its way from joint 0 to joint 1.
void Curve(CCompositeGeometry& element, const tArticle& article);
/// Flexible track, as it lies in its box; at most `a` long.
void Flexible(CCompositeGeometry& element, const tArticle& article);
/// Turnouts as TrackSystem.h draws them; joint 0 is the toe, 1 the straight end, 2 the end of the branch.
void TurnoutLeft(CCompositeGeometry& element, const tArticle& article);
void TurnoutRight(CCompositeGeometry& element, const tArticle& article);
/// A turnout of another radius `a` and angle `b`, by the same rule; to the right for a positive angle.
void Turnout(CCompositeGeometry& element, const tArticle& article);
/// The same with a branch to either side; the branch to the left is joint 3.
void ThreeWayTurnout(CCompositeGeometry& element, const tArticle& article);
/// Both routes turn by `b` at the radius `a`; the outer one, to joint 2, goes straight for the tracks' distance first.
/// The toe is joint 0, of one to the left joint 1: a curve to the left is the piece from its other end.
void CurvedTurnout(CCompositeGeometry& element, const tArticle& article);
/// Turns by `b` to either side at the radius `a`.
void Wye(CCompositeGeometry& element, const tArticle& article);
/// Crossings at `a` degrees: one between the tracks of a ladder, and one of two routes of length `b`.
void LadderCrossing(CCompositeGeometry& element, const tArticle& article);
void Crossing(CCompositeGeometry& element, const tArticle& article);
/// A ladder's crossing with a connection from 0 to 3.
void SingleSlip(CCompositeGeometry& element, const tArticle& article);
/// Crossing with connections between its routes: 0 to 1 the straight one, 2 to 3 the other one, at `a` degrees.
void DoubleSlip(CCompositeGeometry& element, const tArticle& article);
/// End of a track of length `a`; joint 0 is its only one.
void Bumper(CCompositeGeometry& element, const tArticle& article);
/// Turntable; joint 0 is the way in, the others are the stalls on the opposite side, from left to right.
void Turntable(CCompositeGeometry& element, const tArticle& article);
/// Engine shed around a turntable's stalls, `a` deep, its rear `b` from the turntable's middle.
void Roundhouse(CCompositeGeometry& element, const tArticle& article);
/// House of `a` by `b` with the ridge of a roof along its longer side.
void House(CCompositeGeometry& element, const tArticle& article);
/// Anything of `a` by `b`.
void Box(CCompositeGeometry& element, const tArticle& article);
/// A crown of radius `a` around a stem of radius `b`.
void Tree(CCompositeGeometry& element, const tArticle& article);
/// Signal: a foot of `a` by `a` and a lamp of radius `b`.
void Signal(CCompositeGeometry& element, const tArticle& article);
} // namespace Shapes

inline constexpr tLibrary kTrackLibrary = {"Halvensen H0 Profilgleis",
                                           "Halvensen",
                                           129,
                                           ULibraryConstants::kContentTracks,
                                           URailConstants::kScaleH0,
                                           TrackSystem::kGauge,
                                           TrackSystem::kTrackbed,
                                           TrackSystem::kSpacing};
/// Its lines keep their width: loading a library gives them its trackbed.
inline constexpr tLibrary kAccessoryLibrary = {
    "Quirrin Bauten & Zubehör", "Quirrin & Söhne",   129, ULibraryConstants::kContentAccessories,
    URailConstants::kScaleH0,   TrackSystem::kGauge, 0.0, TrackSystem::kSpacing};

// clang-format off
inline constexpr tArticle
    kStraight371  = {&kTrackLibrary, "3100", "Gerades Gleis 371 mm", 649, &Shapes::Straight, 2.0 * TrackSystem::kUnit},
    kStraight240  = {&kTrackLibrary, "3105", "Gerades Gleis 239,6 mm, Weichenstraße", 519, &Shapes::Straight, TrackSystem::kLadderStep},
    kStraight231  = {&kTrackLibrary, "3106", "Gerades Gleis 231,4 mm, neben Kreuzungen", 519, &Shapes::Straight, TrackSystem::kCrossingLength},
    kStraight185  = {&kTrackLibrary, "3110", "Gerades Gleis 185,5 mm", 379, &Shapes::Straight, TrackSystem::kUnit},
    kStraight93   = {&kTrackLibrary, "3120", "Gerades Gleis 92,7 mm", 299, &Shapes::Straight, TrackSystem::kUnit / 2.0},
    kStraight54   = {&kTrackLibrary, "3130", "Passstück 54,1 mm, Weichenstraße", 259, &Shapes::Straight, TrackSystem::kLadderFiller},
    kStraight50   = {&kTrackLibrary, "3131", "Passstück 50 mm, Gegenbogen", 259, &Shapes::Straight, TrackSystem::kBranchStraight},
    kCurve2       = {&kTrackLibrary, "3230", "Gebogenes Gleis R2 422 mm 30°", 489, &Shapes::Curve, TrackSystem::kRadius2, 30.0},
    kCurve3       = {&kTrackLibrary, "3330", "Gebogenes Gleis R3 484 mm 30°", 529, &Shapes::Curve, TrackSystem::kRadius3, 30.0},
    kCurve4       = {&kTrackLibrary, "3430", "Gebogenes Gleis R4 546 mm 30°", 569, &Shapes::Curve, TrackSystem::kRadius4, 30.0},
    kCounterCurve = {&kTrackLibrary, "3515", "Gegenbogen 530 mm 15°", 399, &Shapes::Curve, TrackSystem::kTurnoutRadius, TrackSystem::kTurnoutAngle},
    kTurnoutLeft  = {&kTrackLibrary, "3601", "Weiche links 15°", 2795, &Shapes::TurnoutLeft},
    kTurnoutRight = {&kTrackLibrary, "3602", "Weiche rechts 15°", 2795, &Shapes::TurnoutRight},
    kSlipLeft     = {&kTrackLibrary, "3641", "Doppelte Kreuzungsweiche links 15°", 6450, &Shapes::DoubleSlip, -TrackSystem::kTurnoutAngle},
    kSlipRight    = {&kTrackLibrary, "3642", "Doppelte Kreuzungsweiche rechts 15°", 6450, &Shapes::DoubleSlip, TrackSystem::kTurnoutAngle},
    kBumper       = {&kTrackLibrary, "3700", "Prellbock", 895, &Shapes::Bumper, 60.0},
    kTurntable    = {&kTrackLibrary, "3800", "Drehscheibe mit 5 Abgängen", 28900, &Shapes::Turntable, 0.0, 0.0, 0x9A9A90};

inline constexpr tArticle
    kRoundhouse   = {&kAccessoryLibrary, "Q 1050", "Ringlokschuppen, fünfständig", 11990, &Shapes::Roundhouse, 270.0, 575.0, 0x8C6A5A},
    kTownStation  = {&kAccessoryLibrary, "Q 1100", "Empfangsgebäude »Dünkelsbrück«", 8990, &Shapes::House, 150.0, 620.0, 0xB5651D},
    kSmallStation = {&kAccessoryLibrary, "Q 1120", "Landbahnhof »Krähenwinkl«", 3490, &Shapes::House, 210.0, 95.0, 0xC08050},
    kGoodsShed    = {&kAccessoryLibrary, "Q 1130", "Güterschuppen mit Rampe", 2290, &Shapes::House, 240.0, 90.0, 0x9A7B4F},
    kSignalBox    = {&kAccessoryLibrary, "Q 1140", "Stellwerk", 1990, &Shapes::House, 110.0, 70.0, 0xA86B4C},
    kCoalBunker   = {&kAccessoryLibrary, "Q 1150", "Kohlenbansen", 1290, &Shapes::Box, 170.0, 45.0, 0x404040},
    kTownHouse    = {&kAccessoryLibrary, "Q 2010", "Stadthaus, drei Geschosse", 2490, &Shapes::House, 110.0, 90.0, 0xC9A27A},
    kCornerHouse  = {&kAccessoryLibrary, "Q 2011", "Eckhaus mit Café", 2890, &Shapes::House, 125.0, 120.0, 0xD6B98C},
    kFarmHouse    = {&kAccessoryLibrary, "Q 2040", "Bauernhof", 2690, &Shapes::House, 150.0, 85.0, 0xA5603C},
    kChurch       = {&kAccessoryLibrary, "Q 2100", "Dorfkirche", 3290, &Shapes::House, 190.0, 80.0, 0xDDD5C5},
    kCar          = {&kAccessoryLibrary, "Q 3010", "Pkw, sortiert", 495, &Shapes::Box, 48.0, 20.0, 0x3366AA},
    kBench        = {&kAccessoryLibrary, "Q 3020", "Sitzbank", 195, &Shapes::Box, 22.0, 8.0, 0x7A5230},
    kLamp         = {&kAccessoryLibrary, "Q 3030", "Straßenlaterne", 895, &Shapes::Tree, 5.0, 2.0, 0xFFE070},
    kMast         = {&kAccessoryLibrary, "Q 3040", "Oberleitungsmast", 349, &Shapes::Tree, 4.0, 2.5, 0x555555},
    kSignal       = {&kAccessoryLibrary, "Q 3050", "Lichtsignal", 2190, &Shapes::Signal, 12.0, 4.0, 0xCC2222},
    kSpruce       = {&kAccessoryLibrary, "Q 4010", "Fichte 14 cm", 345, &Shapes::Tree, 19.0, 3.0, 0x2E5E2E},
    kBeech        = {&kAccessoryLibrary, "Q 4020", "Buche 12 cm", 395, &Shapes::Tree, 27.0, 4.0, 0x5E8E3E};
// clang-format on

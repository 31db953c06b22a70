// What the tracks and the scenery of the terminus layout agree on, and the scenery itself.
#pragma once

class CPlan;

/// Measures in mm and names of layers.
namespace Terminus {
inline constexpr int kWidth = 6300;
inline constexpr int kHeight = 3100;
/// The northern of the two main tracks where they leave the throat eastwards.
inline constexpr double kThroat = 3980.0;
inline constexpr double kMain = 2200.0;
inline constexpr double kBumpers = 440.0; ///< about where the platform tracks end
/// The upper station's tracks end here.
inline constexpr double kUpperBumpers = 4900.0;

inline constexpr char kLowerTracks[] = "Gleise Talebene";
inline constexpr char kHelixTracks[] = "Gleiswendel";
inline constexpr char kUpperTracks[] = "Gleise Bergebene";
inline constexpr char kPlatforms[] = "Bahnsteige";
inline constexpr char kBuildings[] = "Gebäude";
inline constexpr char kRoads[] = "Straßen & Wege";
inline constexpr char kGround[] = "Gelände";
inline constexpr char kPlants[] = "Bäume";
inline constexpr char kSignals[] = "Signale";
inline constexpr char kCatenary[] = "Oberleitung";
inline constexpr char kTexts[] = "Beschriftung";
inline constexpr char kNotes[] = "Planungsnotizen";

/// Hills, fields and roads, which lie under the tracks.
void ShapeGround(CPlan& plan);
/// Platforms, town and village, with what stands about in them.
void BuildTerminus(CPlan& plan);
void BuildTown(CPlan& plan);
void BuildCountryside(CPlan& plan);
/// Signals and catenary along the tracks.
void Equip(CPlan& plan);
/// Trees wherever there is room.
void Plant(CPlan& plan);
void Label(CPlan& plan);
} // namespace Terminus

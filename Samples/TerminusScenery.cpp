#include "TerminusScenery.h"

#include "Articles.h"
#include "CPlan.h"
#include "KVUNum/Angles.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

using namespace TrackSystem;

namespace {
constexpr double kMargin = 15.0; ///< of the ground from the edge of the workspace

/// Middle of the helix; of the southern main track's circle and of the northern one's.
constexpr double kHelixX = 978.0;
constexpr double kHelixY = 788.0;
constexpr double kStreet = 2880.0; ///< middle of the town's main street
constexpr double kStreetWidth = 50.0;
constexpr double kCrossings[] = {60.0, 1010.0, 2010.0, 3010.0, 4010.0}; ///< of the town's side streets

/// Numbers without order, the same at every run and on every system.
class CDice {
public:
    explicit CDice(uint32_t seed) : mState(seed) {}

    double Between(double low, double high)
    {
        mState = mState * 1664525u + 1013904223u;
        return low + (high - low) * static_cast<double>(mState >> 8 & 0xFFFFu) / 65535.0;
    }

private:
    uint32_t mState;
};

/// A piece of land where something grows.
struct tGrove {
    double left;
    double top;
    double width;
    double height;
    int trees;
    bool conifers;
};

/// Contour lines around a summit, the widest first.
void AddHill(CPlan& plan, const char* name, tSpot summit, double radiusX, double radiusY, int contours)
{
    CDice dice(static_cast<uint32_t>(summit.x));
    for (int contour = 0; contour < contours; ++contour) {
        const double scale = 1.0 - static_cast<double>(contour) / (contours + 0.5);
        std::vector<tSpot> line;
        for (int angle = 0; angle < 360; angle += 15) {
            const double reach = scale * dice.Between(0.93, 1.07);
            const double x = summit.x + radiusX * reach * std::cos(angle * kRadiansPerDegree);
            const double y = summit.y + radiusY * reach * std::sin(angle * kRadiansPerDegree);
            line.push_back({std::clamp(x, kMargin, Terminus::kWidth - kMargin),
                            std::clamp(y, kMargin, Terminus::kHeight - kMargin)});
        }
        const unsigned shade = static_cast<unsigned>(contour) * 0x080A0Cu;
        plan.Area(name, line, 0xCFE0B0u - shade);
    }
}

/// A platform with benches and lamps, one group.
void AddPlatform(CPlan& plan, const char* name, double top, double length)
{
    constexpr double kLeft = 420.0;
    constexpr double kBreadth = 76.0;
    const size_t first = plan.Count();
    plan.UseLayer(Terminus::kPlatforms);
    plan.Rectangle(name, kLeft, top, length, kBreadth, 0xC8C0B0);
    plan.UseLayer(Terminus::kBuildings);
    for (double x = kLeft + 270.0; x < kLeft + length - 60.0; x += 300.0) {
        plan.Place(kBench, x, top + kBreadth / 2.0);
        plan.Place(kLamp, x + 60.0, top + kBreadth / 2.0);
    }
    plan.UseLayer(Terminus::kTexts);
    plan.Text(name, kLeft + 20.0, top + 24.0, 26);
    plan.GroupSince(first);
}

/// Houses on both sides of the main street between two side streets: groups of a house and what belongs to it, in one
/// group for the block.
void AddBlock(CPlan& plan, CDice& dice, double left, double right)
{
    const size_t block = plan.Count();
    for (const double side : {-1.0, 1.0}) {
        int number = 0;
        for (double x = left + 120.0; x < right - 80.0; x += dice.Between(138.0, 165.0)) {
            const size_t house = plan.Count();
            const double middle = kStreet + side * 95.0;
            const bool corner = number == 0;
            plan.Place(corner ? kCornerHouse : kTownHouse, x, middle, side > 0.0 ? 0.0 : 180.0);
            plan.Place(kLamp, x + 50.0, kStreet + side * 33.0);
            if (number % 2 == 1) {
                plan.Place(kCar, x, kStreet + side * 13.0, side > 0.0 ? 0.0 : 180.0);
            }
            plan.GroupSince(house);
            ++number;
        }
    }
    plan.GroupSince(block);
}
} // namespace

void Terminus::ShapeGround(CPlan& plan)
{
    plan.UseLayer(kGround);
    AddHill(plan, "Wendelberg", {kHelixX, kHelixY}, 820.0, 700.0, 6);
    AddHill(plan, "Hohenquirl", {3900.0, 420.0}, 2200.0, 460.0, 4);
    AddHill(plan, "Försterhöhe", {5050.0, 1720.0}, 620.0, 300.0, 3);
    plan.Area("Steinbruch", {{4680, 650}, {5980, 640}, {6060, 830}, {5800, 930}, {5000, 960}, {4640, 840}}, 0xC9B79A);
    plan.Area("Mühlteich", {{2330, 1660}, {2480, 1625}, {2650, 1650}, {2700, 1720}, {2540, 1780}, {2370, 1750}},
              0x7FB2D8);
    plan.Area("Rapsfeld", {{400, 1420}, {880, 1410}, {900, 1520}, {390, 1540}}, 0xE8D860);
    plan.Area("Weizenfeld", {{920, 1405}, {1420, 1400}, {1440, 1500}, {940, 1515}}, 0xE0C878);
    plan.Area("Wiese", {{380, 1650}, {860, 1640}, {870, 1770}, {360, 1780}}, 0xA8CC80);
    plan.Area("Obstwiese", {{2300, 1430}, {2820, 1420}, {2840, 1540}, {2310, 1550}}, 0x9CC474);
    plan.Area("Kartoffelacker", {{2960, 1420}, {3500, 1425}, {3520, 1540}, {2970, 1550}}, 0xB8A070);

    plan.UseLayer(kRoads);
    plan.Rectangle("Hauptstraße", 60.0, kStreet - kStreetWidth / 2.0, 3950.0, kStreetWidth, 0xB0B0B0);
    for (const double x : kCrossings) {
        plan.Rectangle("Querstraße", x - 20.0, 2720.0, 40.0, 350.0, 0xB0B0B0);
    }
    plan.Rectangle("Ladestraße", 700.0, 2472.0, 1500.0, 76.0, 0xA8A49C);
    plan.Rectangle("Bahnhofsvorplatz", 20.0, 1700.0, 70.0, 1155.0, 0xB8B4AC);
    plan.Line("Landstraße",
              {{90, 1600}, {700, 1590}, {1300, 1600}, {1900, 1585}, {2500, 1585}, {3300, 1600}, {3800, 1660}}, 24,
              0x909090);
    plan.Line("Forstweg", {{3800, 1660}, {4200, 1560}, {4700, 1500}, {5300, 1560}, {5600, 1700}}, 10, 0xA08860);
    plan.Line("Bergstraße", {{2300, 560}, {2750, 640}, {3300, 700}, {3900, 860}, {4700, 900}}, 18, 0x909090);
}

void Terminus::BuildTerminus(CPlan& plan)
{
    const size_t station = plan.Count();
    AddPlatform(plan, "Bahnsteig A", 1852.0, 1250.0);
    AddPlatform(plan, "Bahnsteig B", 2038.0, 1900.0);
    AddPlatform(plan, "Bahnsteig C", 2286.0, 2450.0);
    const size_t building = plan.Count();
    plan.UseLayer(kPlatforms);
    plan.Rectangle("Querbahnsteig", 260.0, 1800.0, 105.0, 640.0, 0xC8C0B0);
    plan.UseLayer(kBuildings);
    plan.Place(kTownStation, 180.0, 2110.0);
    plan.GroupSince(building);
    plan.Place(kSignalBox, 3000.0, 2060.0);
    plan.Place(kGoodsShed, 1180.0, 2655.0);
    plan.GroupSince(station);
}

void Terminus::BuildTown(CPlan& plan)
{
    plan.UseLayer(kBuildings);
    CDice dice(1891);
    const size_t town = plan.Count();
    for (size_t i = 1; i < std::size(kCrossings); ++i) {
        AddBlock(plan, dice, kCrossings[i - 1], kCrossings[i]);
    }
    plan.GroupSince(town);
}

void Terminus::BuildCountryside(CPlan& plan)
{
    plan.UseLayer(kBuildings);
    const size_t village = plan.Count();
    plan.Place(kChurch, 1710.0, 1500.0);
    const struct {
        double x;
        double y;
        double angle;
    } farms[] = {{1010.0, 1665.0, 0.0},   {1230.0, 1670.0, 8.0},  {1450.0, 1680.0, -6.0}, {1700.0, 1670.0, 0.0},
                 {1950.0, 1675.0, 3.0},   {2150.0, 1500.0, 12.0}, {1950.0, 1490.0, 0.0},  {1540.0, 1470.0, 90.0},
                 {3100.0, 1680.0, -10.0}, {3650.0, 1480.0, 5.0}};
    for (const auto& farm : farms) {
        plan.Place(kFarmHouse, farm.x, farm.y, farm.angle);
    }
    plan.GroupSince(village);

    plan.UseLayer(kPlatforms);
    plan.Rectangle("Bahnsteig Hohenquirl", 3800.0, 390.0, 950.0, 76.0, 0xC8C0B0);
    plan.Rectangle("Hausbahnsteig Hohenquirl", 3300.0, 160.0, 1400.0, 56.0, 0xC8C0B0);
    plan.UseLayer(kBuildings);
    plan.Place(kSmallStation, 3900.0, 105.0);
    plan.Place(kSignalBox, 2420.0, 180.0);
    plan.Place(kGoodsShed, 5500.0, 760.0);
    plan.Place(kFarmHouse, 5050.0, 1640.0, 20.0);
}

void Terminus::Equip(CPlan& plan)
{
    plan.UseLayer(kSignals);
    // Exit signals stand where the tracks leave the ladders.
    for (const int track : {0, 1, 3, 4, 6}) {
        plan.Place(kSignal, 3030.0 - track * kCrossingLength, kMain - (track + 0.5) * kSpacing);
    }
    for (const int track : {2, 3, 5}) {
        plan.Place(kSignal, 3440.0 - track * kCrossingLength, kMain + (track + 0.5) * kSpacing);
    }
    for (const double x : {4700.0, 5380.0}) {
        plan.Place(kSignal, x, kMain - 30.0, 180.0);
        plan.Place(kSignal, x, kMain + kSpacing + 30.0);
        plan.Place(kSignal, x, 1140.0, 180.0);
        plan.Place(kSignal, x, 1262.0);
    }
    for (const double x : {1500.0, 2900.0}) {
        plan.Place(kSignal, x, 1242.0, 180.0);
        plan.Place(kSignal, x, 1364.0);
    }
    for (const double y : {273.0, 335.0, 397.0}) {
        plan.Place(kSignal, 3180.0, y, 180.0);
    }
    plan.Place(kSignal, 1700.0, 212.0);
    plan.Place(kSignal, 1700.0, 334.0);

    plan.UseLayer(kCatenary);
    for (double x = 4060.0; x < 5460.0; x += 2.0 * kUnit) {
        plan.Place(kMast, x, kMain - 36.0);
        plan.Place(kMast, x, kMain + kSpacing + 36.0);
        plan.Place(kMast, x, 1134.0);
        plan.Place(kMast, x, 1268.0);
    }
    for (double x = 1000.0; x < 3200.0; x += 2.0 * kUnit) {
        plan.Place(kMast, x, 1236.0);
        plan.Place(kMast, x, 1370.0);
    }
    for (double x = 1000.0; x < 6150.0; x += 2.0 * kUnit) {
        plan.Place(kMast, x, 206.0);
    }
    for (int angle = 0; angle < 360; angle += 30) { // around the helix
        const double reach = kRadius4 + 38.0;
        plan.Place(kMast, kHelixX + reach * std::sin(angle * kRadiansPerDegree),
                   kHelixY - reach * std::cos(angle * kRadiansPerDegree));
    }
}

void Terminus::Plant(CPlan& plan)
{
    constexpr double kDistance = 22.0;
    constexpr int kAttempts = 40;
    const tGrove groves[] = {{600.0, 480.0, 760.0, 620.0, 48, true},    {1640.0, 420.0, 700.0, 720.0, 40, true},
                             {120.0, 60.0, 300.0, 240.0, 8, true},      {2500.0, 760.0, 1500.0, 340.0, 28, true},
                             {4500.0, 1400.0, 1050.0, 680.0, 40, true}, {2320.0, 1440.0, 500.0, 100.0, 10, false},
                             {950.0, 1740.0, 1000.0, 50.0, 9, false},   {3560.0, 1700.0, 850.0, 330.0, 16, false},
                             {4100.0, 2480.0, 420.0, 560.0, 12, false}, {5000.0, 40.0, 1200.0, 140.0, 10, true},
                             {5300.0, 330.0, 850.0, 250.0, 12, true}};
    plan.UseLayer(kPlants);
    CDice dice(4711);
    for (const tGrove& grove : groves) {
        for (int tree = 0; tree < grove.trees; ++tree) {
            for (int attempt = 0; attempt < kAttempts; ++attempt) {
                const double x = grove.left + dice.Between(0.0, grove.width);
                const double y = grove.top + dice.Between(0.0, grove.height);
                if (plan.IsFree(x, y, kDistance)) {
                    const bool other = dice.Between(0.0, 1.0) < 0.2;
                    plan.Place(grove.conifers != other ? kSpruce : kBeech, x, y);
                    break;
                }
            }
        }
    }
    for (const tSpot& bush : {tSpot{2310, 1640}, tSpot{2720, 1690}, tSpot{2560, 1800}, tSpot{2350, 1780}}) {
        plan.Circle("Gebüsch", bush.x, bush.y, 14.0, 0x86A84E);
    }
}

void Terminus::Label(CPlan& plan)
{
    struct tLabel {
        const char* text;
        double x;
        double y;
        int size;
    };
    constexpr double kNumberedTracks[] = {1828.0, 1952.0, 2014.0, 2138.0, 2200.0, 2262.0, 2386.0, 2448.0, 2572.0};
    const tLabel names[] = {
        {"Dünkelsbrück Hbf", 2150.0, 1825.0, 60},
        {"Bw Dünkelsbrück", 4560.0, 2960.0, 44},
        {"Stellwerk »Df«", 3070.0, 2045.0, 20},
        {"Güterschuppen", 1320.0, 2640.0, 22},
        {"Ladestraße", 1350.0, 2495.0, 24},
        {"Bekohlung & Schlackengrube", 4700.0, 2790.0, 20},
        {"Ringlokschuppen", 5480.0, 2990.0, 20},
        {"Abstellgleis für Züge nach Åkersund", 4320.0, 2340.0, 18},
        {"Hauptstraße", 1150.0, 2866.0, 22},
        {"Kirchgäßchen", 1035.0, 3050.0, 16},
        {"Gerbergäßle", 2035.0, 3050.0, 16},
        {"Färberstraße", 3035.0, 3050.0, 16},
        {"Café Théâtre", 90.0, 2990.0, 18},
        {"Bäckerei Müßig", 260.0, 2700.0, 18},
        {"Weinhaus Château d’Ébène", 420.0, 3040.0, 18},
        {"Señor Muñoz, Früchte", 640.0, 2700.0, 18},
        {"Ångström & Søn, Uhren", 1070.0, 2700.0, 18},
        {"Hôtel de la Forêt", 1250.0, 3040.0, 18},
        {"Schuhhaus Größmann", 1480.0, 2700.0, 18},
        {"Crêperie Noël", 1700.0, 3040.0, 18},
        {"Apotheke zum Äskulap", 2080.0, 2700.0, 18},
        {"Gasthof Weißes Rößl", 2260.0, 3040.0, 18},
        {"Buchhandlung Œuvre", 2480.0, 2700.0, 18},
        {"Pâtisserie François", 2720.0, 3040.0, 18},
        {"Kegelbahn »Alle Neune«", 3080.0, 2700.0, 18},
        {"Blumen Zoë", 3300.0, 3040.0, 18},
        {"Fahrräder Özdemir", 3560.0, 2700.0, 18},
        {"Fußgängerzone geplant", 3780.0, 3060.0, 16},
        {"Örlingsmoos", 1100.0, 1528.0, 44},
        {"St. Ægidius", 1660.0, 1425.0, 20},
        {"Landstraße nach Möhrenfels", 2560.0, 1600.0, 18},
        {"Raps", 600.0, 1460.0, 22},
        {"Weizen", 1140.0, 1445.0, 22},
        {"Kuhweide der Familie Bühlmüller", 420.0, 1700.0, 20},
        {"Mühlteich", 2450.0, 1700.0, 24},
        {"Obstwiese", 2500.0, 1480.0, 22},
        {"Erdäpfel", 3180.0, 1475.0, 22},
        {"Försterhöhe", 4940.0, 1720.0, 40},
        {"Forsthaus Großkäuzchen", 4880.0, 1560.0, 20},
        {"Wendelberg", 840.0, 770.0, 48},
        {"Hohenquirl", 4040.0, 90.0, 48},
        {"Gleis 1", 3320.0, 178.0, 18},
        {"Gleis 3 / 4", 3820.0, 418.0, 18},
        {"Steinbruch Felsenmüller & Cie", 5000.0, 850.0, 30},
        {"Anschluß zum Modul Möhrenfels", 5600.0, 170.0, 24},
        {"Quirlbachbrücke", 2300.0, 1180.0, 24},
        {"Tunnelportal Süd", 1260.0, 1395.0, 18},
        {"Tunnelportal Nord", 1240.0, 180.0, 18},
    };
    const tLabel notes[] = {
        {"Wendel: 4,5 Windungen, 3 % Steigung\rR3 innen, R4 außen\rlichte Höhe ≈ 91 mm je Windung, ±2 mm", 640.0,
         1080.0, 22},
        {"Höhe 0 mm", 3300.0, 1170.0, 22},
        {"Höhe ≈ 421 mm", 1900.0, 340.0, 22},
        {"Gefälle 2 % zum Steinbruch", 4100.0, 700.0, 22},
        {"Steckdose Ø 40 mm bohren", 5900.0, 2900.0, 22},
        {"Trafo 2 mal 75 VA", 5900.0, 2940.0, 22},
        {"Weichenstraße: 15°, Gleisabstand 62 mm", 2700.0, 1780.0, 22},
        {"Kosten bisher: § siehe Liste, ca. 3.400 €", 4200.0, 3040.0, 22},
    };
    plan.UseLayer(kTexts);
    int number = 0;
    for (const double y : kNumberedTracks) {
        const std::string text = "Gleis " + std::to_string(++number);
        plan.Text(text.c_str(), kBumpers + 40.0, y - 9.0, 16);
    }
    for (const tLabel& label : names) {
        plan.Text(label.text, label.x, label.y, label.size);
    }
    plan.UseLayer(kNotes);
    for (const tLabel& note : notes) {
        plan.Text(note.text, note.x, note.y, note.size);
    }
}

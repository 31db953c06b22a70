#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {
struct tClose {
    void operator()(FILE* file) const { fclose(file); }
};

/// Loads an element from a stream whose buffer has that size; 0 leaves it the C library's own.
bool LoadElement(CCompositeGeometry& element, const std::string& bytes, std::string& error, size_t buffer = 0)
{
    const std::unique_ptr<FILE, tClose> file(tmpfile());
    static char sBuffer[4096];
    if (buffer > 0) {
        setvbuf(file.get(), sBuffer, _IOFBF, buffer);
    }
    fwrite(bytes.data(), 1, bytes.size(), file.get());
    rewind(file.get());
    return element.Load(file.get(), error);
}

bool LoadElement(CCompositeGeometry& element, const CRecords& records)
{
    std::string error;
    return LoadElement(element, records.Bytes(), error);
}

std::string SavedElement(CCompositeGeometry& element)
{
    const std::unique_ptr<FILE, tClose> file(tmpfile());
    element.Save(file.get());
    std::string bytes(static_cast<size_t>(ftell(file.get())), '\0');
    rewind(file.get());
    bytes.resize(fread(bytes.data(), 1, bytes.size(), file.get()));
    return bytes;
}

/// An element with a component of each kind, none of them turned, that lies aligned and comes back as it is.
tElement FullElement()
{
    const tCommon track = {.gauge = 16.5, .joint1 = false, .trackbedWidth = 33.0, .midRail = 2, .colour = {1, 2, 3}};
    const tCommon graphic = {.x = 5, .y = 6, .joint0 = false, .joint1 = false, .colour = {0xFFFF, 0x1234, 0}};
    tElement element;
    element.name = "Name";
    element.description = "Description";
    element.manufacturer = "Maker";
    element.library = "Library";
    element.prefix = "Pre";
    element.libraryNumber = -12;
    element.price = 1234;
    element.currency = 130;
    element.libraryFlag = true;
    element.x = -1000.125;
    element.y = 2000.5;
    element.z = 80.25;
    element.grade = {1, 2, 3, 104, 5, 6, 7.0000001};
    element.fill = {0x0102, 0x0304, 0x0506};
    element.fillMode = false;
    element.layer = "Base";
    element.components = {Straight(track, 180), Curve(track, 360, 30),
                          Polygon(graphic, {{1, 2}, {-3, 40}, {5.5, -6}}, false, 4, 7), Oval(graphic, 12.5, 99, 3),
                          Flexible(track, {{0, 16.5}, {100, 20}, {200, 16.5}}, 940)};
    return element;
}

class ElementRecord : public testing::Test {
protected:
    ElementRecord()
    {
        tLayout layout;
        layout.layers = {{"Base"}, {"Upper"}, {std::string(63, 'u')}};
        mLayers.LoadRecords(Layout(layout));
    }
    CTestLayout mLayers; ///< for the names of layers
};
} // namespace

TEST_F(ElementRecord, ComesBackByteForByte)
{
    const tElement source = FullElement();
    CRecords records = Element(source);
    CCompositeGeometry element;
    EXPECT_TRUE(LoadElement(element, records));
    EXPECT_EQ(SavedElement(element).substr(0, 8), std::string("RCig\0\0\0\4", 8));
    EXPECT_EQ(element.GetLayer(), mLayers.GetLayerList()->GetLayerAtIndex(0));
    EXPECT_EQ(element.GetNumberOfTrackBIGs(), 3);
    EXPECT_DOUBLE_EQ(element.GetGrade().GetDeltaHeight(), 7.0000001);
    // The middle of the points need not be the left top corner: what aligning moves comes back in the position.
    const CRecords saved = CRecords::OfDocument(SavedElement(element));
    const double dx = saved.DoubleOf(200) - source.x;
    const double dy = saved.DoubleOf(201) - source.y;
    records.Replace(200, saved.DataOf(200)).Replace(201, saved.DataOf(201));
    for (size_t i = 0; i < source.components.size(); ++i) {
        EXPECT_NEAR(records.DoubleOf(301, i) - dx, saved.DoubleOf(301, i), 3e-7) << i;
        EXPECT_NEAR(records.DoubleOf(302, i) - dy, saved.DoubleOf(302, i), 3e-7) << i;
        records.Replace(301, saved.DataOf(301, i), i).Replace(302, saved.DataOf(302, i), i);
    }
    EXPECT_EQ(saved.Bytes(), records.Bytes());

    CReports reports;
    tElement text;
    text.components = {Text({.joint0 = false, .joint1 = false},
                            "Gr\x9F"
                            "e",
                            18, 3)};
    CCompositeGeometry textElement;
    EXPECT_TRUE(LoadElement(textElement, Element(text)));
    EXPECT_EQ(SavedElement(textElement), Element(text).Replace(326, SavedFontBlock()).Bytes());
    EXPECT_THAT(reports.mMessages, ElementsAre(Pair(Platform::eReportLevel::kWarning, "No saving fontnames yet!")));
}

TEST_F(ElementRecord, ReadsTheSameWhereverTheBufferEnds)
{
    const std::string bytes = Element(FullElement()).Bytes();
    CCompositeGeometry whole;
    std::string error;
    ASSERT_TRUE(LoadElement(whole, bytes, error));
    const std::string expected = SavedElement(whole);
    for (size_t buffer = 1; buffer < 400; buffer += buffer < 130 ? 1 : 17) {
        CCompositeGeometry element;
        EXPECT_TRUE(LoadElement(element, bytes, error, buffer));
        EXPECT_EQ(SavedElement(element), expected) << buffer;
    }
}

TEST_F(ElementRecord, ReadsTheSameWhateverStandsBetweenItsRecords)
{
    // Runs of records that usually follow each other are read at once: not so when one of them is another.
    const CRecords source = Element(FullElement());
    CCompositeGeometry whole;
    ASSERT_TRUE(LoadElement(whole, source));
    const std::string expected = SavedElement(whole);
    const std::vector<CRecords::tPiece>& pieces = source.Pieces();
    for (size_t at = 1; at < pieces.size(); ++at) {
        SCOPED_TRACE("key " + std::to_string(pieces[at].key) + ", record " + std::to_string(at));
        CRecords stuffed;
        CRecords longer;
        for (size_t i = 0; i < pieces.size(); ++i) {
            if (i == at) {
                stuffed.Record(999, "x").Record(0, "y");
                longer.Record(pieces[i].key, pieces[i].data + "tail");
            } else {
                longer.Raw(pieces[i].Bytes());
            }
            stuffed.Raw(pieces[i].Bytes());
        }
        CCompositeGeometry stuffedElement;
        EXPECT_TRUE(LoadElement(stuffedElement, stuffed));
        EXPECT_EQ(SavedElement(stuffedElement), expected);
        CCompositeGeometry longerElement;
        EXPECT_TRUE(LoadElement(longerElement, longer));
        EXPECT_EQ(SavedElement(longerElement), expected);
    }
}

TEST_F(ElementRecord, VersionsAndHeaders)
{
    tElement source = FullElement();
    source.version = 3;
    CCompositeGeometry old;
    EXPECT_TRUE(LoadElement(old, Element(source)));
    EXPECT_EQ(old.GetPosition().z, 0.0);
    EXPECT_FALSE(old.GetGrade().IsGraded());
    EXPECT_EQ(old.GetLayer(), nullptr);
    EXPECT_EQ(old.GetNumberOfComponents(), 5U);
    EXPECT_FALSE(old.GetFillMode());

    const std::string good = Element(FullElement()).Bytes();
    const auto version = [&good](uint32_t number) { return std::string(good).replace(4, 4, Bytes32(number)); };
    const std::string badHeader = "Element expected, bad header found.";
    const std::string badType = "Unsupported component type encountered.";
    const struct {
        const char* what;
        std::string bytes;
        std::string error;
        std::string warning;
    } cases[] = {
        {"empty", "", badHeader, ""},
        {"cut header", good.substr(0, 7), badHeader, ""},
        {"bad magic", "RCih" + good.substr(4), badHeader, ""},
        {"version 2", version(2), "untouched",
         "bool CCompositeGeometry::Load(FILE *, string &): Unsupported file format (version 2)"},
        {"version 0", version(0), "untouched",
         "bool CCompositeGeometry::Load(FILE *, string &): Unsupported file format (version 0)"},
        {"version 5", version(5), badType,
         "bool CCompositeGeometry::Load(FILE *, string &): Unsupported component type encountered."},
        {"version 0xFFFFFFFF is large", version(0xFFFFFFFF), badType,
         "bool CCompositeGeometry::Load(FILE *, string &): Unsupported component type encountered."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CReports reports;
        CCompositeGeometry element;
        std::string error = "untouched";
        EXPECT_FALSE(LoadElement(element, c.bytes, error));
        EXPECT_EQ(error, c.error);
        std::vector<std::string> warnings;
        for (const auto& [level, text] : reports.mMessages) {
            if (level == Platform::eReportLevel::kWarning) {
                warnings.push_back(text);
            }
        }
        EXPECT_EQ(warnings, c.warning.empty() ? std::vector<std::string>() : std::vector<std::string>{c.warning});
    }
    // A later version without components needs no type code.
    source.version = 5;
    source.components.clear();
    CCompositeGeometry later;
    EXPECT_TRUE(LoadElement(later, Element(source)));
    EXPECT_STREQ(later.GetName(), "Name");
    EXPECT_EQ(later.GetLayer(), nullptr);
}

TEST_F(ElementRecord, TypeCodes)
{
    tElement source;
    source.components = {Straight({}, 10), Straight({}, 20)};
    const std::string badType = "Unsupported component type encountered.";
    const struct {
        int64_t code;
        const char* error;
    } cases[] = {{0, "Failed to open file"},
                 {7, "Failed to open file"},
                 {INT_MAX, "Failed to open file"},
                 {-1, badType.c_str()},
                 {INT_MIN, badType.c_str()}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        CReports reports;
        CCompositeGeometry element;
        std::string error;
        EXPECT_FALSE(LoadElement(
            element, Element(source).Replace(300, Bytes32(static_cast<uint32_t>(c.code)), 1).Bytes(), error));
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(element.GetNumberOfComponents(), 1U);
        const auto warning =
            Pair(Platform::eReportLevel::kWarning, "bool CCompositeGeometry::Load(FILE *, string &): " + badType);
        EXPECT_EQ(c.error == badType, testing::Value(reports.mMessages, Contains(warning)));
    }
    for (const char* record : {"", "short"}) { // an empty record, and one too short for its number
        CCompositeGeometry element;
        std::string error;
        EXPECT_FALSE(
            LoadElement(element, Element(source).Replace(300, std::string(record).substr(0, 3), 1).Bytes(), error));
        EXPECT_EQ(error, badType);
    }
    CCompositeGeometry element;
    std::string error;
    EXPECT_FALSE(LoadElement(element, Element(source).Remove(300, 1).Bytes(), error));
    EXPECT_EQ(error, badType);
}

TEST_F(ElementRecord, LoadingSetsWhatFilesDoNotDecide)
{
    // Second colour, rail widths, joints of what is no track.
    const struct {
        int scale;
        double railWidth;
    } scales[] = {{11, 0.5}, {12, 0.7}, {16, 0.9}, {17, 1.6}, {20, 5.0}, {22, 1.1}, {10, 1.0}, {-1, 1.0}};
    for (const auto& scale : scales) {
        SCOPED_TRACE(scale.scale);
        tElement source = FullElement();
        source.scale = scale.scale;
        source.second = {9, 8, 7};
        const tCommon allowed = {.railWidth = 77.0};
        source.components = {Straight(allowed, 10), Curve(allowed, 100, 30), Polygon(allowed, {{0, 0}}),
                             Text(allowed, "t"),    Oval(allowed, 5.0, 5.0), Flexible(allowed, {{0, 0}, {9, 9}})};
        CCompositeGeometry element;
        ASSERT_TRUE(LoadElement(element, Element(source)));
        EXPECT_EQ(CRecords::OfDocument(SavedElement(element)).DataOf(204), BytesOfColour({0, 0, 0}));
        for (short i = 0; i < 6; ++i) {
            CBasicGeometry* component = element.GetBIGAtIndex(i);
            EXPECT_EQ(component->GetRailWidth(), scale.railWidth);
            const bool track = IsTrackType(component->GetType());
            EXPECT_EQ(component->IsJointAllowed(0), track) << i;
            EXPECT_EQ(component->IsJointAllowed(1), track) << i;
            EXPECT_EQ(component->GetJoint(1)->GetOwner(), &element);
        }
        std::vector<CJoint*> joints;
        element.GetJoints(joints, true, true);
        EXPECT_EQ(joints.size(), 6U);
    }
}

TEST_F(ElementRecord, MissingRecordsLeaveTheirFields)
{
    const CRecords full = Element(FullElement());
    CCompositeGeometry reference;
    ASSERT_TRUE(LoadElement(reference, full));
    const CRecords expected = CRecords::OfDocument(SavedElement(reference));
    CCompositeGeometry empty;
    const CRecords defaults = CRecords::OfDocument(SavedElement(empty));
    for (int key = 200; key <= 225; ++key) {
        if (key == 206) {
            continue;
        }
        SCOPED_TRACE(key);
        CCompositeGeometry element;
        ASSERT_TRUE(LoadElement(element, CRecords(full).Replace(key, "")));
        const CRecords saved = CRecords::OfDocument(SavedElement(element));
        CRecords changed = expected;
        if (key == 200 || key == 201) { // the position starts at 0 and moves by what aligning takes from the parts
            EXPECT_NEAR(saved.DoubleOf(key), expected.DoubleOf(key) - full.DoubleOf(key), 3e-7);
            changed.Replace(key, saved.DataOf(key));
        } else {
            changed.Replace(key, defaults.DataOf(key));
        }
        EXPECT_EQ(saved.Bytes(), changed.Bytes());
    }
    // A colour that an earlier load has set is not swapped by one without it.
    for (const char* block : {"", "\1\2"}) {
        EXPECT_TRUE(LoadElement(reference, CRecords(full).Replace(203, block).Replace(206, Bytes32(0))));
        EXPECT_EQ(CRecords::OfDocument(SavedElement(reference)).DataOf(203), full.DataOf(203));
    }
    CStraightBIG straight;
    RGBColor colour = {1, 2, 3};
    straight.SetFixedColor(colour);
    const CScratchFile noColour(CommonBlock({}).Replace(310, "\1\2").Bytes());
    const std::unique_ptr<FILE, tClose> file(fopen(noColour.Path().c_str(), "rb"));
    EXPECT_TRUE(straight.Load(file.get(), 4));
    straight.GetFixedColor(colour);
    EXPECT_EQ(colour.red, 1);
    EXPECT_EQ(colour.blue, 3);
    // The same in a component of each kind: 301 to 310 in one of them, the others' own records.
    const tCommon odd = {.gauge = 9,
                         .angle = 180,
                         .joint0 = false,
                         .joint1 = false,
                         .trackbedWidth = 20,
                         .midRail = 5,
                         .colour = {1, 2, 3}};
    const struct {
        CRecords component;
        int first;
        int last;
    } kinds[] = {{Oval(odd, 10, 20, 7), 301, 310},
                 {Oval({}, 10, 20, 7), 315, 317},
                 {Straight({}, 180), 311, 311},
                 {Curve({}, 100, 20), 312, 313},
                 {Polygon({}, {{0, 0}, {5, 6}}, false, 5, 6), 321, 323},
                 {Text({}, "changed", 11, 12), 324, 327},
                 {Flexible({}, {{0, 0}, {2, 2}}, 77), 314, 314}};
    for (const auto& kind : kinds) {
        tElement source;
        source.components = {kind.component};
        CRecords blank = Element(source);
        for (int key = kind.first; key <= kind.last; ++key) {
            blank.Replace(key, "");
        }
        const auto load = [](CCompositeGeometry& element, const CRecords& records) {
            EXPECT_TRUE(LoadElement(element, records));
            return CRecords::OfDocument(SavedElement(element));
        };
        CCompositeGeometry blankElement;
        CCompositeGeometry presentElement;
        const CRecords blankSaved = load(blankElement, blank);
        const CRecords present = load(presentElement, Element(source));
        for (int key = kind.first; key <= kind.last; ++key) {
            SCOPED_TRACE(key);
            CCompositeGeometry element;
            CRecords changed = present;
            EXPECT_EQ(load(element, Element(source).Replace(key, "")).Bytes(),
                      changed.Replace(key, blankSaved.DataOf(key)).Bytes());
        }
    }
    tElement points;
    points.components = {Polygon({}, {{0, 0}, {5, 6}, {7, 8}})};
    CCompositeGeometry polygon;
    ASSERT_TRUE(LoadElement(polygon, Element(points).Replace(319, "", 1).Replace(320, "", 2)));
    const CRecords savedPoints = CRecords::OfDocument(SavedElement(polygon));
    EXPECT_EQ(savedPoints.IntOf(318), 3);
    EXPECT_EQ(savedPoints.DoubleOf(319, 1), 0.0);
    EXPECT_EQ(savedPoints.DoubleOf(320, 1), 6.0);
    EXPECT_EQ(savedPoints.DoubleOf(319, 2), 7.0);
    EXPECT_EQ(savedPoints.DoubleOf(320, 2), 0.0);
    tElement text;
    text.components = {Text({}, "changed", 11, 12)};
    CCompositeGeometry element;
    CRecords records = Element(text);
    for (int key = 324; key <= 327; ++key) {
        records.Replace(key, "");
    }
    ASSERT_TRUE(LoadElement(element, records));
    const auto* component = dynamic_cast<CTextBIG*>(element.GetBIGAtIndex(0));
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(component->GetText(), "TEXT");
    EXPECT_EQ(component->GetFontName(), "Futura");
    EXPECT_EQ(component->GetTextSize(), 24);
}

TEST_F(ElementRecord, TextsAndFontNamesOfAnyLength)
{
    const std::string longest(300, 'x');
    tElement source;
    CRecords records = Element(source);
    for (int key = 207; key <= 211; ++key) {
        records.Replace(key, longest);
    }
    records.Replace(217, std::string(64, 'u'));
    CCompositeGeometry element;
    ASSERT_TRUE(LoadElement(element, records));
    EXPECT_EQ(element.GetName(), longest.substr(0, 31));
    EXPECT_EQ(element.GetDescription(), longest.substr(0, 63));
    EXPECT_EQ(std::string(element.GetManufacturer()), longest.substr(0, 31));
    EXPECT_EQ(element.GetRailSetName(), longest.substr(0, 127));
    EXPECT_EQ(element.GetPrefix(), longest.substr(0, 7));
    ASSERT_NE(element.GetLayer(), nullptr);
    EXPECT_EQ(element.GetLayer()->GetName(), std::string(63, 'u'));

    const struct {
        std::string block;
        std::string font;
        std::string text;
        std::string kept;
    } cases[] = {
        {"\5Arialxyz", "Arial", std::string("\0", 1), ""},
        {"\xFF"
         "Arial",
         "Arial", "no zero", "no zero"},
        {SavedFontBlock(), "rial", std::string("in\0side", 7), "in"},
        {std::string("\7Gen\0eva", 8), "Gen", std::string(2047, 't'), std::string(2047, 't')},
        {std::string(1, '\0'), "", std::string(65535, 't'), std::string(2047, 't')},
        {"\3", "", "\r\n", "\r\n"},
        {"\xFF" + std::string(600, 'f'), std::string(255, 'f'), "x", "x"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.font);
        source.components = {Text({}, "x")};
        CCompositeGeometry textElement;
        ASSERT_TRUE(LoadElement(textElement, Element(source).Replace(326, c.block).Replace(327, c.text)));
        const auto* component = dynamic_cast<CTextBIG*>(textElement.GetBIGAtIndex(0));
        ASSERT_NE(component, nullptr);
        EXPECT_EQ(component->GetFontName(), c.font);
        EXPECT_EQ(component->GetText(), c.kept);
    }
}

TEST_F(ElementRecord, LayerNames)
{
    const struct {
        const char* name;
        const char* found;
    } cases[] = {{"Base", "Base"}, {"Upper", "Upper"}, {"", nullptr}, {"base", nullptr}, {"Upper ", nullptr}};
    for (const auto& c : cases) {
        tElement source;
        source.layer = c.name;
        CCompositeGeometry element;
        ASSERT_TRUE(LoadElement(element, Element(source)));
        EXPECT_STREQ(element.GetLayer() != nullptr ? element.GetLayer()->GetName() : nullptr, c.found);
        EXPECT_EQ(CRecords::OfDocument(SavedElement(element)).TextOf(217), c.found != nullptr ? c.found : "");
    }
}

TEST_F(ElementRecord, LegacyShapesAreMentioned)
{
    const CRecords polygon = Polygon({}, {{0, 0}, {10, 10}});
    const CRecords flexible = Flexible({}, {{0, 0}, {10, 10}});
    const struct {
        const char* description;
        const char* library;
        std::vector<CRecords> components;
        bool mentioned;
    } cases[] = {
        {"Rectangle", "-", {polygon}, true},
        {"Line", "", {polygon, Straight({}, 1)}, true},
        {"Line", "X", {flexible}, true}, // one character is no library, a flexible track is a polygon by its class
        {"Rectangle", "AB", {polygon}, false},
        {"rectangle", "-", {polygon}, false},
        {"Rectangle", "-", {Straight({}, 1)}, false},
        {"Rectangle", "-", {}, false},
        {"Line", "-", {Straight({}, 1), polygon}, false},
        {"Lines", "-", {polygon}, false},
    };
    const auto warning = Pair(Platform::eReportLevel::kWarning,
                              "bool CCompositeGeometry::Load(FILE *, string &): Need replacement for SetPolySubType!");
    for (const auto& c : cases) {
        CReports reports;
        tElement source;
        source.description = c.description;
        source.library = c.library;
        source.components = c.components;
        CCompositeGeometry element;
        ASSERT_TRUE(LoadElement(element, Element(source)));
        EXPECT_EQ(testing::Value(reports.mMessages, Contains(warning)), c.mentioned) << c.description << c.library;
    }
}

TEST_F(ElementRecord, KeepsItsPlaceWhenItIsAligned)
{
    CRandom random(5);
    for (uint64_t seed = 0; seed < 60; ++seed) {
        for (tElement& source : RandomLayout(seed, 4, true).elements) {
            source.layer.clear();
            const CRecords records = Element(source);
            CCompositeGeometry element;
            ASSERT_TRUE(LoadElement(element, records));
            for (size_t i = 0; i < source.components.size(); ++i) {
                CBasicGeometry* component = element.GetBIGAtIndex(static_cast<short>(i));
                EXPECT_NEAR(element.GetPosition().x + component->GetItemXOffset(), source.x + records.DoubleOf(301, i),
                            1e-9);
                EXPECT_NEAR(element.GetPosition().y + component->GetItemYOffset(), source.y + records.DoubleOf(302, i),
                            1e-9);
            }
            const bool hasText = std::any_of(source.components.begin(), source.components.end(),
                                             [](const CRecords& component) { return component.IntOf(300) == 4; });
            if (!hasText && !source.components.empty()) { // a text's box does not follow its offset
                DRect box = {};
                element.CalcBoundingBox(box);
                EXPECT_NEAR(box.left, 0.0, 1e-6);
                EXPECT_NEAR(box.top, 0.0, 1e-6);
            }
        }
    }
}

TEST_F(ElementRecord, AFlexibleTrackHoldsAPolygon)
{
    tElement source;
    source.components = {Flexible({}, {{0, 0}, {50, 10}, {100, 0}}, 321.5), Straight({}, 10)};
    CRecords records = Element(source);
    ASSERT_EQ(records.CountOf(300), 3U);
    records.Replace(300, Bytes32(99), 1); // the polygon's own code is not looked at
    CCompositeGeometry element;
    ASSERT_TRUE(LoadElement(element, records));
    EXPECT_EQ(element.GetNumberOfComponents(), 2U);
    const auto* flexible = dynamic_cast<CFlexTrackBIG*>(element.GetBIGAtIndex(0));
    ASSERT_NE(flexible, nullptr);
    EXPECT_EQ(flexible->GetNumberOfPoints(), 3);
    EXPECT_EQ(flexible->GetFlexTrackMaxLength(), 321.5);
    const CRecords saved = CRecords::OfDocument(SavedElement(element));
    EXPECT_EQ(saved.IntOf(300, 0), 6);
    EXPECT_EQ(saved.IntOf(300, 1), 3);
    EXPECT_EQ(saved.IntOf(300, 2), 1);
}

TEST_F(ElementRecord, AFileMayHoldMoreComponentsThanAppendingTakes)
{
    tElement source;
    source.components.assign(700, Straight({}, 1));
    CCompositeGeometry element;
    ASSERT_TRUE(LoadElement(element, Element(source)));
    EXPECT_EQ(element.GetNumberOfComponents(), 700U);
    EXPECT_EQ(CRecords::OfDocument(SavedElement(element)).IntOf(206), 700);
}

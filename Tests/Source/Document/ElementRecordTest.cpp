#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "TestLayout.h"
#include "support/Streams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;

namespace {
bool LoadElement(CCompositeGeometry& element, const std::string& bytes, std::string& error)
{
    return element.Load(StreamOf(bytes).get(), error);
}

bool LoadElement(CCompositeGeometry& element, const CRecords& records)
{
    std::string error;
    return LoadElement(element, records.Bytes(), error);
}

std::string SavedElement(CCompositeGeometry& element)
{
    return Written([&element](FILE* file) { element.Save(file); });
}

/// An element with a component of each kind, none of them turned, that lies aligned and comes back as it is.
tElement FullElement()
{
    const tCommon track = {.gauge = 16.5, .joint1 = false, .trackbedWidth = 33.0, .midRail = 2, .colour = {1, 2, 3}};
    const tCommon graphic = {.x = 5, .y = 6, .joint0 = false, .joint1 = false, .colour = {0xFFFF, 0x1234, 0}};
    return {.name = "Name",
            .description = "Description",
            .manufacturer = "Maker",
            .library = "Library",
            .prefix = "Pre",
            .libraryNumber = -12,
            .price = 1234,
            .currency = 130,
            .libraryFlag = true,
            .x = -1000.125,
            .y = 2000.5,
            .z = 80.25,
            .grade = {1, 2, 3, 104, 5, 6, 7.0000001},
            .fill = {0x0102, 0x0304, 0x0506},
            .second = {7, 8, 9}, // which no element shows
            .fillMode = false,
            .layer = "Base",
            .components = {Straight(track, 180), Curve(track, 360, 30),
                           Polygon(graphic, {{1, 2}, {-3, 40}, {5.5, -6}}, false, 4, 7), Oval(graphic, 12.5, 99, 3),
                           Flexible(track, {{0, 16.5}, {100, 20}, {200, 16.5}}, 940)}};
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
    // Not looked at, and written again as they belong: the code of the polygon in a flexible track, the width of rails,
    // and whether a circle has joints.
    EXPECT_TRUE(LoadElement(
        element, CRecords(records).Replace(300, Bytes32(99), 5).Replace(308, BytesOfDouble(7)).Replace(305, "\1", 3)));
    EXPECT_EQ(SavedElement(element).substr(0, 8), std::string("RCig\0\0\0\4", 8));
    EXPECT_EQ(element.GetLayer(), mLayers.GetLayerList()->GetLayerAtIndex(0));
    EXPECT_EQ(element.GetNumberOfTrackBIGs(), 3);
    // Each record has its own field: two that are exchanged would come back as well.
    const tLibraryItemAttributes& library = element.GetLibraryItemAttributes();
    EXPECT_STREQ(library.name, "Name");
    EXPECT_THAT((std::vector<int>{library.libraryNumber, library.price, library.currency, library.modelScale}),
                ElementsAre(-12, 1234, 130, 16));
    const CGradeVector& grade = element.GetGrade();
    EXPECT_THAT((std::vector<double>{grade.GetStartPoint().x, grade.GetStartPoint().y, grade.GetStartPoint().z,
                                     grade.GetEndPoint().x, grade.GetEndPoint().y, grade.GetEndPoint().z,
                                     grade.GetDeltaHeight(), element.GetPosition().z}),
                ElementsAre(1, 2, 3, 104, 5, 6, 7.0000001, 80.25));
    CBasicGeometry* const straight = element.GetBIGAtIndex(0);
    EXPECT_THAT((std::vector<double>{straight->GetGauge(), straight->GetAngle(), straight->GetTrackbedWidth()}),
                ElementsAre(16.5, 0, 33));
    EXPECT_TRUE(straight->IsJointAllowed(0));
    EXPECT_FALSE(straight->IsJointAllowed(1));
    EXPECT_EQ(dynamic_cast<CCurveBIG*>(element.GetBIGAtIndex(1))->GetItemRadius(), 360);
    EXPECT_EQ(element.GetBIGAtIndex(2)->GetLineThickness(), 7);
    EXPECT_EQ(dynamic_cast<COvalBIG*>(element.GetBIGAtIndex(3))->GetRadX(), 12.5);
    records.Replace(204, BytesOfColour({0, 0, 0}));
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
}

TEST_F(ElementRecord, HeadersVersionsAndTypeCodes)
{
    tElement source = FullElement();
    source.version = 3;
    CCompositeGeometry old;
    EXPECT_TRUE(LoadElement(old, Element(source)));
    EXPECT_EQ(old.GetPosition().z, 0.0);
    EXPECT_FALSE(old.GetGrade().IsGraded());
    EXPECT_EQ(old.GetLayer(), nullptr);
    EXPECT_EQ(old.GetNumberOfComponents(), 5U);

    const CRecords records = Element(FullElement());
    const std::string good = records.Bytes();
    const auto version = [&good](uint32_t number) { return std::string(good).replace(4, 4, Bytes32(number)); };
    const auto type = [&records](const std::string& data) { return CRecords(records).Replace(300, data, 1).Bytes(); };
    const std::string badHeader = "Element expected, bad header found.";
    const std::string badType = "Unsupported component type encountered.";
    const std::string unknownType = "Failed to open file";
    const struct {
        const char* what;
        std::string bytes;
        std::string error;
        std::string warning;
        size_t components;
    } cases[] = {
        {"cut header", good.substr(0, 7), badHeader, "", 0},
        {"bad magic", "RCih" + good.substr(4), badHeader, "", 0},
        {"version 2", version(2), "untouched", "Unsupported file format (version 2)", 0},
        {"version 0xFFFFFFFF is large", version(0xFFFFFFFF), badType, badType, 0},
        {"type 0", type(Bytes32(0)), unknownType, "", 1},
        {"type 7", type(Bytes32(7)), unknownType, "", 1},
        {"type -1", type(Bytes32(0xFFFFFFFF)), badType, badType, 1},
        {"type too short", type("sho"), badType, badType, 1},
        {"no type behind the last", CRecords(records).Replace(206, Bytes32(6)).Bytes(), badType, badType, 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        CReports reports;
        CCompositeGeometry element;
        std::string error = "untouched";
        EXPECT_FALSE(LoadElement(element, c.bytes, error));
        EXPECT_EQ(error, c.error);
        EXPECT_EQ(element.GetNumberOfComponents(), c.components);
        std::vector<std::string> warnings;
        for (const auto& [level, text] : reports.mMessages) {
            if (level == Platform::eReportLevel::kWarning) {
                warnings.push_back(text);
            }
        }
        const std::string warning = "bool CCompositeGeometry::Load(FILE *, string &): " + c.warning;
        EXPECT_EQ(warnings, c.warning.empty() ? std::vector<std::string>() : std::vector<std::string>{warning});
    }
    // A later version without components needs no type code.
    source.version = 5;
    source.components.clear();
    CCompositeGeometry later;
    EXPECT_TRUE(LoadElement(later, Element(source)));
    EXPECT_STREQ(later.GetName(), "Name");
    EXPECT_EQ(later.GetLayer(), nullptr);
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
    const tElement points = {.components = {Polygon({}, {{0, 0}, {5, 6}, {7, 8}})}};
    CCompositeGeometry polygon;
    ASSERT_TRUE(LoadElement(polygon, Element(points).Replace(319, "", 1).Replace(320, "", 2)));
    const CRecords saved = CRecords::OfDocument(SavedElement(polygon));
    EXPECT_THAT((std::vector<double>{saved.DoubleOf(319, 1), saved.DoubleOf(320, 1), saved.DoubleOf(319, 2)}),
                ElementsAre(0, 6, 7));
    EXPECT_EQ(saved.DoubleOf(320, 2), 0.0);
}

TEST_F(ElementRecord, FontNamesAndTextsOfAnyLength)
{
    const struct {
        std::string block;
        std::string font;
        std::string text;
        std::string kept;
    } cases[] = {
        {"", "Futura", "", "TEXT"},
        {"\5Arialxyz", "Arial", std::string("\0", 1), ""},
        {SavedFontBlock(), "rial", std::string("in\0side", 7), "in"},
        {std::string("\7Gen\0eva", 8), "Gen", "no zero", "no zero"},
        {"\3", "", std::string(65535, 't'), std::string(2047, 't')},
        {"\xFF" + std::string(600, 'f'), std::string(255, 'f'), "x", "x"},
    };
    const CRecords source = Element({.components = {Text({}, "x")}});
    for (const auto& c : cases) {
        SCOPED_TRACE(c.font);
        CCompositeGeometry element;
        ASSERT_TRUE(LoadElement(element, CRecords(source).Replace(326, c.block).Replace(327, c.text)));
        const auto* text = dynamic_cast<CTextBIG*>(element.GetBIGAtIndex(0));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->GetFontName(), c.font);
        EXPECT_EQ(text->GetText(), c.kept);
    }
}

TEST_F(ElementRecord, IsAlignedToItsLeftTop)
{
    for (const tElement& source : RandomLayout(1, 240, true).elements) {
        const bool hasText = std::any_of(source.components.begin(), source.components.end(),
                                         [](const CRecords& component) { return component.IntOf(300) == 4; });
        if (!hasText && !source.components.empty()) { // a text's box does not follow its offset
            CCompositeGeometry element;
            ASSERT_TRUE(LoadElement(element, Element(source)));
            DRect box = {};
            element.CalcBoundingBox(box);
            EXPECT_NEAR(box.left, 0.0, 1e-6);
            EXPECT_NEAR(box.top, 0.0, 1e-6);
        }
    }
}

TEST_F(ElementRecord, AFileMayHoldMoreComponentsThanAppendingTakes)
{
    CCompositeGeometry element;
    ASSERT_TRUE(LoadElement(element, Element({.components = std::vector<CRecords>(700, Straight({}, 1))})));
    EXPECT_EQ(CRecords::OfDocument(SavedElement(element)).IntOf(206), 700);
}

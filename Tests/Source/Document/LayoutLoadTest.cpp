#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "Layouts/CDisplayOptionsManager.h"
#include "TestLayout.h"
#include "support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {
/// A layout of two straights, grouped, in which every setting differs from its default.
tLayout SmallLayout(int version)
{
    tLayout layout;
    layout.version = version;
    layout.elements.resize(2);
    layout.elements[0].name = "first";
    layout.elements[0].layer = "Upper";
    layout.elements[0].components = {Straight({}, 100)};
    layout.elements[1].name = "second";
    layout.elements[1].layer = "Base";
    layout.elements[1].components = {Straight({}, 200)};
    layout.groups = {1, -1, 2, 0, 1, 0};
    return layout;
}

/// What differs between two runs of the settings' records, as "key" texts; what a save sets by itself left out.
std::vector<int> ChangedSettings(const CRecords& expected, const CRecords& saved)
{
    std::vector<int> changed;
    for (int key = 400; key <= 430; ++key) {
        const bool ofLayout = key == 423 || key == 424 || key == 425;
        const bool isSet = key == 401 || key == 403 || key == 417;
        if (!ofLayout && !isSet && expected.DataOf(key) != saved.DataOf(key)) {
            changed.push_back(key);
        }
    }
    return changed;
}

std::vector<std::string> ElementNames(CLayout& layout)
{
    std::vector<std::string> names;
    for (const CCompositeGeometry* element : layout.GetElements()) {
        names.emplace_back(element->GetName());
    }
    return names;
}

} // namespace

TEST(LayoutLoad, EachVersionReadsItsRecords)
{
    const CRecords defaults = CTestLayout().Saved();
    for (const int version : {3, 4, 5, 6, INT_MAX}) {
        SCOPED_TRACE(version);
        const tLayout source = SmallLayout(version);
        CTestLayout layout;
        EXPECT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
        EXPECT_THAT(ElementNames(layout), ElementsAre("first", "second"));
        EXPECT_EQ(layout.GetGroups().size(), 1U);
        EXPECT_STREQ(layout.GetAuthor(), "An author");
        EXPECT_STREQ(layout.GetDesc(), "A description");
        EXPECT_STREQ(layout.GetRevision(), "1.2");
        EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 103);
        EXPECT_TRUE(layout.PointIsWithinWSBounds({1233, 2344, 0}));
        EXPECT_FALSE(layout.PointIsWithinWSBounds({1235, 10, 0}));
        EXPECT_TRUE(layout.HasFilename());
        EXPECT_FALSE(layout.HasElementLabelFlag(CLayout::kShowPrefix));

        CRecords expected = Settings(source);
        for (const int key : {426, 427, 428, 429, 430}) { // what older versions lack stays as constructed
            if (expected.CountOf(key) == 0) {
                expected.Record(key, defaults.DataOf(key));
            }
        }
        const CRecords saved = layout.Saved();
        EXPECT_THAT(ChangedSettings(expected, saved), IsEmpty());
        EXPECT_EQ(saved.Pieces().front().data, LayoutHeader(5).Bytes());
        EXPECT_EQ(saved.TextOf(401), "3F3F3F");
        if (version >= 4) {
            EXPECT_THAT(layout.LayerNames(), ElementsAre("Base", "Upper"));
            EXPECT_STREQ(layout.GetElements()[0]->GetLayer()->GetName(), "Upper");
        } else {
            EXPECT_THAT(layout.LayerNames(), ElementsAre("LocalizedLayerName"));
            EXPECT_EQ(layout.GetElements()[0]->GetLayer(), nullptr);
        }
    }
}

TEST(LayoutLoad, ResultCodesAndWhatStays)
{
    const std::string good = Layout(SmallLayout(5)).Bytes();
    CRecords secondFails = Layout(SmallLayout(5));
    secondFails.Replace(300, Bytes32(7), 1);
    const auto version = [&good](uint32_t number) { return std::string(good).replace(4, 4, Bytes32(number)); };
    const struct {
        const char* what;
        std::string bytes;
        int result;
        size_t kept;
    } cases[] = {
        {"empty", "", 2, 0},
        {"header without its last byte", good.substr(0, 7), 2, 0},
        {"another magic", "WkSu" + good.substr(4), 2, 0},
        {"version 2", version(2), 3, 0},
        {"version -1", version(0xFFFFFFFF), 3, 0},
        {"header alone", good.substr(0, 8), 0, 0},
        {"second element damaged", secondFails.Bytes(), 4, 1},
        {"good", good, 0, 2},
    };
    CTestLayout layout;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(layout.LoadBytes(good), CLayout::kLoaded); // the next load has something to empty
        EXPECT_EQ(layout.LoadBytes(c.bytes), c.result);
        EXPECT_EQ(layout.GetElements().size(), c.kept);
        EXPECT_EQ(layout.GetGroups().empty(), c.kept == 0);
    }

    CTestLayout fresh;
    for (const std::string& path : {std::string(), TestPath("missing/file"), std::string("/dev/null\0x", 11)}) {
        EXPECT_EQ(fresh.Load(path), CLayout::kCannotOpen) << path;
    }
    EXPECT_EQ(fresh.Load(TestPath("")), CLayout::kNoLayout);
    EXPECT_FALSE(fresh.HasFilename());
}

TEST(LayoutLoad, AnElementFailureKeepsWhatWasBeforeItAndSaysWhy)
{
    CRecords records = Layout(SmallLayout(5));
    records.Remove(300, 1);
    CReports reports;
    CTestLayout layout;
    EXPECT_EQ(layout.LoadRecords(records), CLayout::kElementFailed);
    EXPECT_THAT(reports.mMessages,
                Contains(Pair(Platform::eReportLevel::kWarning,
                              "int CLayout::Load(string): Failed to load layout, Unsupported component type "
                              "encountered.")));
    EXPECT_THAT(ElementNames(layout), ElementsAre("first"));

    // A failed type code consumes nothing behind it, so the groups are read: without the element that is not there.
    records = Layout(SmallLayout(5));
    records.Replace(300, Bytes32(0), 1);
    EXPECT_EQ(layout.LoadRecords(records), CLayout::kElementFailed);
    ASSERT_EQ(layout.GetGroups().size(), 1U);
    EXPECT_EQ(layout.GetGroups()[0]->GetMemberItemsVec(), layout.GetElements());
    EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 103);

    // Fewer elements than promised.
    records = Layout(SmallLayout(5));
    records.Replace(423, Bytes32(INT_MAX));
    EXPECT_EQ(layout.LoadRecords(records), CLayout::kElementFailed);
    EXPECT_EQ(layout.GetElements().size(), 2U);
}

TEST(LayoutLoad, AnEmptyRecordLosesItsOwnFieldOnly)
{
    const tLayout source = SmallLayout(5);
    const CRecords defaults = CTestLayout().Saved();
    for (int key = 400; key <= 430; ++key) {
        if (key == 423 || key == 424 || key == 425) {
            continue;
        }
        SCOPED_TRACE(key);
        CRecords expected = Settings(source);
        expected.Replace(key, defaults.DataOf(key));
        CTestLayout layout;
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(key, "")), CLayout::kLoaded);
        const CRecords saved = layout.Saved();
        EXPECT_THAT(ElementNames(layout), ElementsAre("first", "second"));
        if (key == 402) {
            continue; // the default is the time of construction
        }
        EXPECT_THAT(ChangedSettings(expected, saved), IsEmpty());
    }
    // Blocks that are cut short keep what an earlier document left in them.
    CTestLayout layout;
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    const CRecords cut = Layout(source).Replace(420, "\xFF").Replace(421, "\xFF").Replace(422, "\xFF");
    EXPECT_EQ(layout.LoadRecords(cut), CLayout::kLoaded);
    EXPECT_THAT(ChangedSettings(Settings(source), layout.Saved()), IsEmpty());
}

TEST(LayoutLoad, RecordsOutOfOrderAreLost)
{
    tLayout source = SmallLayout(5);
    source.elements.clear();
    source.groups.clear();
    const CRecords defaults = CTestLayout().Saved();
    // 404 behind 407: the search for it passes 405 to 407, whose own searches then run to the end.
    const std::string description = Layout(source).DataOf(404);
    CRecords records = Layout(source);
    records.Remove(404).InsertBefore(408, CRecords().Record(404, description));
    CTestLayout layout;
    EXPECT_EQ(layout.LoadRecords(records), CLayout::kLoaded);
    CRecords expected = Settings(source);
    for (const int key : {405, 406, 407, 408, 409, 410, 411, 412, 413, 414, 415, 416,
                          417, 418, 419, 420, 421, 422, 426, 427, 428, 429, 430}) {
        expected.Replace(key, defaults.DataOf(key));
    }
    EXPECT_THAT(ChangedSettings(expected, layout.Saved()), IsEmpty());
    EXPECT_EQ(layout.GetLayerList()->GetNumberOfLayers(), 0);
}

TEST(LayoutLoad, TextsAreCutToTheirFields)
{
    CRecords records = Layout(SmallLayout(5));
    for (const int key : {400, 402, 404, 405, 406, 407}) {
        records.Replace(key, std::string(60000, '\x8A')); // without a zero
    }
    records.Replace(401, std::string(256, 'A'));
    CTestLayout layout;
    EXPECT_EQ(layout.LoadRecords(records), CLayout::kLoaded);
    char name[300] = "";
    layout.GetPrivAuthorName(name, sizeof name);
    EXPECT_EQ(name, std::string(127, '\xAA'));
    layout.GetPrivAuthorName(name, 2);
    EXPECT_STREQ(name, "\xAA");
    EXPECT_STREQ(layout.GetAuthor(), std::string(127, '\x8A').c_str());
    EXPECT_STREQ(layout.GetDesc(), std::string(4095, '\x8A').c_str());
    EXPECT_STREQ(layout.GetRevision(), std::string(31, '\x8A').c_str());
    EXPECT_EQ(layout.LoadRecords(records.Replace(401, "0")), CLayout::kLoaded);
    layout.GetPrivAuthorName(name, sizeof name);
    EXPECT_STREQ(name, "-");
}

TEST(LayoutLoad, CountsAreClaims)
{
    const tLayout source = SmallLayout(5);
    for (const int64_t count : {int64_t{-1}, int64_t{INT_MIN}, int64_t{0}}) {
        SCOPED_TRACE(count);
        const std::string bytes = Bytes32(static_cast<uint32_t>(count));
        tLayout noElements = source;
        noElements.elements.clear();
        noElements.groups = {1, -1, 0, 0};
        CTestLayout layout;
        EXPECT_EQ(layout.LoadRecords(Layout(noElements).Replace(423, bytes)), CLayout::kLoaded);
        EXPECT_EQ(layout.GetGroups().size(), 1U);
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(424, bytes)), CLayout::kLoaded);
        EXPECT_THAT(layout.GetGroups(), IsEmpty());
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(500, bytes)), CLayout::kLoaded);
        EXPECT_EQ(layout.GetLayerList()->GetNumberOfLayers(), 0);
        EXPECT_EQ(layout.GetElements().size(), 2U);
        EXPECT_EQ(layout.GetElements()[0]->GetLayer(), nullptr);
    }
    CTestLayout layout;
    // The layer list runs through the elements in search of more names.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(500, Bytes32(INT_MAX))), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("Base", "Upper"));
    EXPECT_THAT(layout.GetElements(), IsEmpty());
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(424, Bytes32(INT_MAX))), CLayout::kLoaded);
    EXPECT_EQ(layout.GetGroups().size(), 1U);
    // More entries than promised, a short entry, an empty one: the list ends in front of them.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Append(CRecords().Int(425, 9).Int(425, 9))), CLayout::kLoaded);
    EXPECT_EQ(layout.GetGroups()[0]->GetMemberItemsVec().size(), 2U);
    for (const char* entry : {"", "abc"}) {
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(425, entry, 3)), CLayout::kLoaded);
        EXPECT_THAT(layout.GetGroups()[0]->GetMemberItemsVec(), IsEmpty()); // not the entry behind it either
    }
    // Components end with a failure, points do not.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(206, Bytes32(INT_MAX), 1)), CLayout::kElementFailed);
    EXPECT_THAT(ElementNames(layout), ElementsAre("first"));
    tLayout polygon = source;
    polygon.elements[1].components = {Polygon({}, {{1, 2}, {3, 4}})};
    EXPECT_EQ(layout.LoadRecords(Layout(polygon).Replace(318, Bytes32(INT_MAX))), CLayout::kLoaded);
    ASSERT_EQ(layout.GetElements().size(), 2U);
    const auto* points = dynamic_cast<CPolyBIG*>(layout.GetElements()[1]->GetBIGAtIndex(0));
    ASSERT_NE(points, nullptr);
    EXPECT_EQ(points->GetNumberOfPoints(), 2);
    EXPECT_EQ(layout.LoadRecords(Layout(polygon).Replace(318, Bytes32(0xFFFFFFFF))), CLayout::kLoaded);
    EXPECT_EQ(dynamic_cast<CPolyBIG*>(layout.GetElements()[1]->GetBIGAtIndex(0))->GetNumberOfPoints(), 0);
    EXPECT_EQ(layout.LoadRecords(Layout(polygon).Replace(206, Bytes32(0xFFFFFFFF), 1)), CLayout::kLoaded);
    EXPECT_EQ(layout.GetElements()[1]->GetNumberOfComponents(), 0U);
}

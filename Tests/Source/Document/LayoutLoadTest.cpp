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
    return {.version = version,
            .elements = {{.name = "first", .layer = "Upper", .components = {Straight({}, 100)}},
                         {.name = "second", .layer = "Base", .components = {Straight({}, 200)}}},
            .groups = {1, -1, 2, 0, 1, 0}};
}

/// Whether a key from 400 to 430 is neither the elements' nor the groups'.
bool IsSetting(int key)
{
    return key < 423 || key > 425;
}

/// What differs between two runs of the settings' records, as "key" texts; what a save sets by itself left out.
std::vector<int> ChangedSettings(const CRecords& expected, const CRecords& saved)
{
    std::vector<int> changed;
    for (int key = 400; key <= 430; ++key) {
        const bool isSet = key == 401 || key == 403 || key == 417;
        if (IsSetting(key) && !isSet && expected.DataOf(key) != saved.DataOf(key)) {
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
    for (const int version : {3, 4, 5, INT_MAX}) {
        SCOPED_TRACE(version);
        const tLayout source = SmallLayout(version);
        CTestLayout layout;
        EXPECT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
        EXPECT_THAT(ElementNames(layout), ElementsAre("first", "second"));
        EXPECT_STREQ(layout.GetAuthor(), "An author");
        EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 103);
        EXPECT_TRUE(layout.PointIsWithinWSBounds({1233, 2344, 0}));
        EXPECT_FALSE(layout.PointIsWithinWSBounds({1235, 10, 0}));
        EXPECT_EQ(layout.GetElements()[0]->GetLayer() != nullptr, version >= 4);

        CRecords expected = Settings(source);
        for (const int key : {426, 427, 428, 429, 430}) { // what older versions lack stays as constructed
            if (expected.CountOf(key) == 0) {
                expected.Record(key, defaults.DataOf(key));
            }
        }
        const CRecords saved = layout.Saved();
        EXPECT_THAT(ChangedSettings(expected, saved), IsEmpty());
        EXPECT_EQ(saved.Pieces().front().data, LayoutHeader(5).Bytes());
    }
}

TEST(LayoutLoad, ResultCodesAndWhatStays)
{
    const std::string good = Layout(SmallLayout(5)).Bytes();
    const auto version = [&good](uint32_t number) { return std::string(good).replace(4, 4, Bytes32(number)); };
    const struct {
        const char* what;
        std::string bytes;
        int result;
        size_t kept;
    } cases[] = {
        {"header without its last byte", good.substr(0, 7), 2, 0},
        {"another magic", "WkSu" + good.substr(4), 2, 0},
        {"version 2", version(2), 3, 0},
        {"version -1", version(0xFFFFFFFF), 3, 0},
        {"header alone", good.substr(0, 8), 0, 0},
        {"second element damaged", Layout(SmallLayout(5)).Replace(300, Bytes32(7), 1).Bytes(), 4, 1},
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
    const CRecords whole = Layout(SmallLayout(5));
    CReports reports;
    CTestLayout layout;
    EXPECT_EQ(layout.LoadRecords(CRecords(whole).Replace(300, "", 1)), CLayout::kElementFailed);
    EXPECT_THAT(reports.mMessages,
                Contains(Pair(Platform::eReportLevel::kWarning,
                              "int CLayout::Load(string): Failed to load layout, Unsupported component type "
                              "encountered.")));
    EXPECT_THAT(ElementNames(layout), ElementsAre("first"));
    // A failed type code consumes nothing behind it, so the groups are read: without the element that is not there.
    ASSERT_EQ(layout.GetGroups().size(), 1U);
    EXPECT_EQ(layout.GetGroups()[0]->GetMemberItemsVec(), layout.GetElements());
    EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 103);
    // Fewer elements than promised.
    EXPECT_EQ(layout.LoadRecords(CRecords(whole).Replace(423, Bytes32(INT_MAX))), CLayout::kElementFailed);
    EXPECT_EQ(layout.GetElements().size(), 2U);
}

TEST(LayoutLoad, AnEmptyRecordLosesItsOwnFieldOnly)
{
    const tLayout source = SmallLayout(5);
    const CRecords defaults = CTestLayout().Saved();
    for (int key = 400; key <= 430; ++key) {
        if (!IsSetting(key)) {
            continue;
        }
        SCOPED_TRACE(key);
        CTestLayout layout;
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(key, "")), CLayout::kLoaded);
        EXPECT_THAT(ElementNames(layout), ElementsAre("first", "second"));
        const CRecords expected = Settings(source).Replace(key, defaults.DataOf(key));
        if (key != 402) { // whose default is the time of construction
            EXPECT_THAT(ChangedSettings(expected, layout.Saved()), IsEmpty());
        }
    }
    // Blocks that are cut short keep what an earlier document left in them.
    CTestLayout layout;
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    const CRecords cut = Layout(source).Replace(420, "\xFF").Replace(421, "\xFF").Replace(422, "\xFF");
    EXPECT_EQ(layout.LoadRecords(cut), CLayout::kLoaded);
    EXPECT_THAT(ChangedSettings(Settings(source), layout.Saved()), IsEmpty());
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
    EXPECT_STREQ(layout.GetDesc(), std::string(4095, '\x8A').c_str());
    EXPECT_STREQ(layout.GetRevision(), std::string(31, '\x8A').c_str());
    EXPECT_EQ(layout.LoadRecords(records.Replace(401, "0")), CLayout::kLoaded);
    layout.GetPrivAuthorName(name, sizeof name);
    EXPECT_STREQ(name, "-");
}

TEST(LayoutLoad, CountsAreClaims)
{
    tLayout source = SmallLayout(5);
    source.elements[1].components = {Polygon({}, {{1, 2}, {3, 4}})};
    CTestLayout layout;
    const auto load = [&](int key, int64_t count, size_t nth = 0) {
        return layout.LoadRecords(Layout(source).Replace(key, Bytes32(static_cast<uint32_t>(count)), nth));
    };
    const auto pointsOfSecond = [&layout] {
        return dynamic_cast<CPolyBIG*>(layout.GetElements().at(1)->GetBIGAtIndex(0))->GetNumberOfPoints();
    };
    for (const int count : {-1, INT_MIN, 0}) {
        SCOPED_TRACE(count);
        EXPECT_EQ(load(424, count), CLayout::kLoaded);
        EXPECT_THAT(layout.GetGroups(), IsEmpty());
        EXPECT_EQ(load(500, count), CLayout::kLoaded);
        EXPECT_THAT(layout.LayerNames(), IsEmpty());
        EXPECT_THAT(ElementNames(layout), ElementsAre("first", "second"));
        EXPECT_EQ(layout.GetElements()[0]->GetLayer(), nullptr);
        EXPECT_EQ(load(318, count), CLayout::kLoaded);
        EXPECT_EQ(pointsOfSecond(), 0);
        EXPECT_EQ(load(206, count, 1), CLayout::kLoaded);
        EXPECT_EQ(layout.GetElements()[1]->GetNumberOfComponents(), 0U);
        tLayout noElements = source;
        noElements.elements.clear();
        noElements.groups = {1, -1, 0, 0};
        EXPECT_EQ(layout.LoadRecords(Layout(noElements).Replace(423, Bytes32(static_cast<uint32_t>(count)))), 0);
        EXPECT_EQ(layout.GetGroups().size(), 1U);
    }
    // The layer list runs through the elements in search of more names.
    EXPECT_EQ(load(500, INT_MAX), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("Base", "Upper"));
    EXPECT_THAT(layout.GetElements(), IsEmpty());
    EXPECT_EQ(load(424, INT_MAX), CLayout::kLoaded);
    EXPECT_EQ(layout.GetGroups().size(), 1U);
    // Components end with a failure, points do not.
    EXPECT_EQ(load(318, INT_MAX), CLayout::kLoaded);
    EXPECT_EQ(pointsOfSecond(), 2);
    EXPECT_EQ(load(206, INT_MAX, 1), CLayout::kElementFailed);
    EXPECT_THAT(ElementNames(layout), ElementsAre("first"));
    // More entries than promised, a short entry, an empty one: the list ends in front of them.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Append(CRecords().Int(425, 9).Int(425, 9))), CLayout::kLoaded);
    EXPECT_EQ(layout.GetGroups()[0]->GetMemberItemsVec().size(), 2U);
    for (const char* entry : {"", "abc"}) {
        EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(425, entry, 3)), CLayout::kLoaded);
        EXPECT_THAT(layout.GetGroups()[0]->GetMemberItemsVec(), IsEmpty()); // not the entry behind it either
    }
}

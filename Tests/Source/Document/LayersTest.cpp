#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {
struct tClose {
    void operator()(FILE* file) const { fclose(file); }
};

std::vector<std::string> Names(const CLayerManager& layers)
{
    std::vector<std::string> names;
    for (int i = 0; i < layers.GetNumberOfLayers(); ++i) {
        names.emplace_back(layers.GetLayerAtIndex(i)->GetName());
    }
    return names;
}

/// Loads a layer section; what follows it in the stream comes back as bytes.
bool LoadSection(CLayerManager& layers, const CRecords& records, int version, std::string& message,
                 std::string* rest = nullptr)
{
    const std::unique_ptr<FILE, tClose> file(tmpfile());
    const std::string bytes = records.Bytes();
    fwrite(bytes.data(), 1, bytes.size(), file.get());
    rewind(file.get());
    const bool loaded = layers.Load(file.get(), version, message);
    if (rest != nullptr) {
        rest->resize(bytes.size());
        rest->resize(fread(rest->data(), 1, rest->size(), file.get()));
    }
    return loaded;
}
} // namespace

TEST(Layers, NamesBecomeUniqueWithinTheirField)
{
    const std::string full(63, 'f');
    CTestLayout layout;
    tLayout source;
    source.layers = {{"A"},
                     {"A", true, false},
                     {"B"},
                     {"A"},
                     {"A*"},
                     {""},
                     {""},
                     {full},
                     {full + "g"},
                     {std::string(61, 'x')},
                     {std::string(61, 'x')},
                     {std::string(61, 'x')},
                     {std::string(61, 'x')}};
    source.elements.resize(2);
    source.elements[0].layer = "A";
    source.elements[1].layer = full + "tail"; // cut like the layer's own name
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    const std::string x(61, 'x');
    EXPECT_THAT(layout.LayerNames(),
                ElementsAre("A", "A*", "B", "A**", "A***", "", "*", full, full, x, x + "*", x + "**", x + "**"));
    CLayerManager* layers = layout.GetLayerList();
    EXPECT_EQ(layers->GetActiveLayer(), layers->GetLayerAtIndex(12));
    EXPECT_EQ(layers->GetLayerByName("A*"), layers->GetLayerAtIndex(1));
    EXPECT_EQ(layers->GetLayerByName(full.c_str()), layers->GetLayerAtIndex(7));
    EXPECT_EQ(layers->GetLayerByName("C"), nullptr);
    EXPECT_TRUE(layers->GetLayerAtIndex(1)->GetLocked());
    EXPECT_FALSE(layers->GetLayerAtIndex(1)->GetIsVisible());
    EXPECT_EQ(layout.GetElements()[0]->GetLayer(), layers->GetLayerAtIndex(0));
    EXPECT_EQ(layout.GetElements()[1]->GetLayer(), layers->GetLayerAtIndex(7));
}

TEST(Layers, AStoredSectionKeepsItsValuesAndEndsWithItsNames)
{
    CLayerManager layers("first");
    std::string message;
    std::string rest;
    // Missing records repeat the layer before; without one a layer is unlocked and visible.
    EXPECT_TRUE(LoadSection(layers,
                            CRecords()
                                .Int(500, 4)
                                .Text(501, "1")
                                .Record(502, "")
                                .Record(503, "")
                                .Text(501, "2")
                                .Bool(502, true)
                                .Bool(503, false)
                                .Text(501, "3")
                                .Record(502, "")
                                .Record(503, "")
                                .Text(501, "4")
                                .Bool(502, false)
                                .Record(503, "")
                                .Int(423, 7),
                            5, message, &rest));
    EXPECT_THAT(Names(layers), ElementsAre("1", "2", "3", "4"));
    const bool locked[] = {false, true, true, false};
    const bool visible[] = {true, false, false, false};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(layers.GetLayerAtIndex(i)->GetLocked(), locked[i]) << i;
        EXPECT_EQ(layers.GetLayerAtIndex(i)->GetIsVisible(), visible[i]) << i;
    }
    EXPECT_EQ(rest, CRecords().Int(423, 7).Bytes());

    // An empty name record ends the list where it stands, and key 423 is still found.
    tLayout source;
    source.layers = {{"one"}, {"two"}, {"three"}};
    source.elements.resize(1);
    CTestLayout layout;
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(501, "", 1)), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("one"));
    EXPECT_THAT(layout.GetElements(), SizeIs(1));

    // Without a count the list is empty.
    EXPECT_TRUE(LoadSection(layers, CRecords().Record(500, "").Text(501, "1"), 5, message));
    EXPECT_EQ(layers.GetNumberOfLayers(), 0);
}

TEST(Layers, OldVersionsHaveNoSection)
{
    CReports reports;
    CLayerManager layers("kept");
    for (const int version : {3, 0, -1}) {
        std::string message;
        std::string rest;
        const CRecords records = LayerSection({{"other"}});
        EXPECT_FALSE(LoadSection(layers, records, version, message, &rest));
        EXPECT_EQ(message, "The object is not recognized by this version of Velmora.\r\rPlease check the Velmora "
                           "Website for a newer version.");
        EXPECT_THAT(Names(layers), ElementsAre("kept"));
        EXPECT_EQ(rest, records.Bytes());
    }
    EXPECT_THAT(reports.mMessages, IsEmpty());
}

TEST(Layers, OrderAndActiveLayerAsLayersComeAndGo)
{
    CLayerManager layers("LocalizedLayerName");
    EXPECT_TRUE(layers.GetLayerAtIndex(0)->GetIsVisible());
    EXPECT_FALSE(layers.GetLayerAtIndex(0)->GetLocked());
    for (const char* name : {"A", "B", "C", "A"}) {
        layers.AddLayer(name);
        EXPECT_STREQ(layers.GetActiveLayer()->GetName(), name);
    }
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(4), 1); // the second A in front of the first
    CLayer* const secondA = layers.GetLayerAtIndex(1);
    EXPECT_EQ(layers.GetLayerByName("A"), secondA);
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(0), 99);
    EXPECT_THAT(Names(layers), ElementsAre("A", "A", "B", "C", "LocalizedLayerName"));
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(1), -7);
    EXPECT_THAT(Names(layers), ElementsAre("A", "B", "C", "LocalizedLayerName", "A"));

    EXPECT_EQ(layers.GetActiveLayer(), secondA);
    layers.DeleteLayer("A"); // the first of that name, which is active and first in the list
    EXPECT_STREQ(layers.GetActiveLayer()->GetName(), "B");
    EXPECT_EQ(layers.GetLayerByName("A"), layers.GetLayerAtIndex(3));
    layers.SetActiveLayer(2);
    layers.DeleteLayer(layers.GetLayerAtIndex(2));
    EXPECT_STREQ(layers.GetActiveLayer()->GetName(), "C");
    layers.DeleteLayer("A");
    EXPECT_STREQ(layers.GetActiveLayer()->GetName(), "C");

    layers.GetLayerAtIndex(0)->SetVisible(false);
    layers.GetLayerAtIndex(1)->SetLocked(true);
    EXPECT_EQ(layers.GetFirstUnlockedVisibleLayer(), nullptr);
    std::map<CLayer*, bool> visibility;
    layers.GetCurrentVisibilityAsMap(visibility);
    layers.ShowAllLayers();
    EXPECT_EQ(layers.GetFirstUnlockedVisibleLayer(), layers.GetLayerAtIndex(0));
    CLayer* const unknown = layers.AddLayer("later");
    layers.RestoreLayerVisibility(visibility);
    EXPECT_FALSE(layers.GetLayerAtIndex(0)->GetIsVisible());
    EXPECT_TRUE(layers.GetLayerAtIndex(1)->GetIsVisible());
    EXPECT_FALSE(unknown->GetIsVisible());
}

TEST(Layers, MisuseIsReportedAndChangesNothing)
{
    CReports reports;
    testing::internal::CaptureStderr();
    CLayerManager layers("only");
    CLayer stranger("stranger");
    const auto lastReport = [&reports] {
        const std::string text = reports.mAlerts.empty() ? "" : reports.mAlerts.back().text;
        reports.mAlerts.clear();
        return text;
    };
    layers.DeleteLayer(layers.GetLayerAtIndex(0));
    EXPECT_THAT(lastReport(), HasSubstr("Cannot delete last layer."));
    layers.AddLayer("second");
    layers.DeleteLayer(&stranger);
    EXPECT_THAT(lastReport(), HasSubstr("Cannot delete layer from layer list (not found)."));
    layers.DeleteLayer("nobody");
    EXPECT_THAT(lastReport(), HasSubstr("Cannot find layer be deleted."));
    EXPECT_EQ(layers.GetIndexOfLayer(&stranger), -1);
    EXPECT_THAT(lastReport(), HasSubstr("Cannot find layer in layer list (not found)."));
    layers.MoveLayerToIndex(&stranger, 0);
    EXPECT_THAT(lastReport(), HasSubstr("Cannot find layer in layer list (not found)."));
    for (const int index : {2, -1}) {
        layers.SetActiveLayer(index);
        EXPECT_THAT(lastReport(), HasSubstr("Invalid layer index."));
    }
    EXPECT_THAT(Names(layers), ElementsAre("only", "second"));
    EXPECT_STREQ(layers.GetActiveLayer()->GetName(), "second");
    layers.Clear();
    layers.SetActiveLayer(0); // its own error code, which is no error
    EXPECT_EQ(lastReport(), "");
    testing::internal::GetCapturedStderr();
}

TEST(LayersDeathTest, ANameNeedsAResolver)
{
    CLayer::ConfigureLayerNameResolver(nullptr);
    EXPECT_EXIT(CLayer::GetLayerByName("x"), testing::ExitedWithCode(0), "No layer name resolver configured.");
}

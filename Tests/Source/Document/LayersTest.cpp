#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "TestLayout.h"
#include "support/Fatal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <utility>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(Layers, NamesBecomeUniqueWithinTheirField)
{
    const std::string full(63, 'f');
    const std::string x(61, 'x');
    CTestLayout layout;
    tLayout source;
    source.layers = {{"A"}, {"A"}, {"B"}, {"A"}, {"A*"}, {""}, {""}, {full}, {full + "g"}, {x}, {x}, {x}, {x}};
    source.elements.resize(2);
    source.elements[0].layer = "A";
    source.elements[1].layer = full + "tail"; // cut like the layer's own name
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    CLayerManager* layers = layout.GetLayerList();
    EXPECT_THAT(layout.LayerNames(),
                ElementsAre("A", "A*", "B", "A**", "A***", "", "*", full, full, x, x + "*", x + "**", x + "**"));
    EXPECT_EQ(layers->GetActiveLayer(), layers->GetLayerAtIndex(12));
    EXPECT_EQ(layers->GetLayerByName("A*"), layers->GetLayerAtIndex(1));
    EXPECT_EQ(layers->GetLayerByName("C"), nullptr);
    EXPECT_EQ(layout.GetElements()[0]->GetLayer(), layers->GetLayerAtIndex(0));
    EXPECT_EQ(layout.GetElements()[1]->GetLayer(), layers->GetLayerAtIndex(7));
}

TEST(Layers, AStoredSectionKeepsItsValuesAndEndsWithItsNames)
{
    tLayout source;
    source.layers = {{"1"}, {"2", true, false}, {"3"}, {"4"}};
    source.elements.resize(1);
    CRecords records = Layout(source);
    for (const size_t layer : {size_t{0}, size_t{2}}) { // without its records a layer repeats the one before
        records.Replace(502, "", layer).Replace(503, "", layer);
    }
    CTestLayout layout;
    ASSERT_EQ(layout.LoadRecords(records.Replace(503, "", 3)), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("1", "2", "3", "4"));
    const std::pair<bool, bool> lockedVisible[] = {{false, true}, {true, false}, {true, false}, {false, false}};
    for (int i = 0; i < 4; ++i) {
        const CLayer* layer = layout.GetLayerList()->GetLayerAtIndex(i);
        EXPECT_EQ(std::pair(layer->GetLocked(), layer->GetIsVisible()), lockedVisible[i]) << i;
    }
    // An empty name record ends the list where it stands, a missing count before it begins.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(501, "", 1)), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("1"));
    EXPECT_THAT(layout.GetElements(), SizeIs(1));
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(500, "")), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), IsEmpty());
    EXPECT_THAT(layout.GetElements(), SizeIs(1));

    std::string message;
    EXPECT_FALSE(CLayerManager("old").Load(nullptr, 3, message)); // of whose section nothing is read
    EXPECT_EQ(message, "The object is not recognized by this version of Velmora.\r\rPlease check the Velmora Website "
                       "for a newer version.");
}

TEST(Layers, OrderAndActiveLayerAsLayersComeAndGo)
{
    CTestLayout layout;
    CLayerManager& layers = *layout.GetLayerList();
    for (const char* name : {"A", "B", "C", "A"}) {
        layers.AddLayer(name);
        EXPECT_STREQ(layers.GetActiveLayer()->GetName(), name);
    }
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(4), 1); // the second A in front of the first
    CLayer* const secondA = layers.GetLayerAtIndex(1);
    EXPECT_EQ(layers.GetLayerByName("A"), secondA);
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(0), 99);
    layers.MoveLayerToIndex(layers.GetLayerAtIndex(1), -7);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("A", "B", "C", "LocalizedLayerName", "A"));

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
    CTestLayout layout;
    CLayerManager& layers = *layout.GetLayerList();
    CLayer stranger("stranger");
    layers.DeleteLayer(layers.GetLayerAtIndex(0));
    layers.AddLayer("second");
    layers.DeleteLayer(&stranger);
    layers.DeleteLayer("nobody");
    layers.MoveLayerToIndex(&stranger, 0); // has no index
    layers.SetActiveLayer(2);
    layers.SetActiveLayer(-1);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("LocalizedLayerName", "second"));
    EXPECT_STREQ(layers.GetActiveLayer()->GetName(), "second");
    layers.Clear();
    layers.SetActiveLayer(0); // its own error code, which is no error
    const char* const expected[] = {"Cannot delete last layer.",     "Cannot delete layer from layer list (not found).",
                                    "Cannot find layer be deleted.", "Cannot find layer in layer list (not found).",
                                    "Invalid layer index.",          "Invalid layer index."};
    ASSERT_THAT(reports.mAlerts, SizeIs(std::size(expected)));
    for (size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_THAT(reports.mAlerts[i].text, HasSubstr(expected[i]));
    }
    testing::internal::GetCapturedStderr();
}

TEST(Layers, NamesAreThoseOfTheLayoutThatWasBoundLast)
{
    auto first = std::make_unique<CBoundLayout>();
    const std::string name = first->GetLayerList()->GetLayerAtIndex(0)->GetName();
    auto second = std::make_unique<CBoundLayout>();
    first.reset();
    EXPECT_EQ(CLayer::GetLayerByName(name.c_str()), second->GetLayerList()->GetLayerAtIndex(0));
    second.reset();
    EXPECT_EQ(CLayer::GetLayerByName(name.c_str()), nullptr);
}

TEST(LayersDeathTest, ANameNeedsAResolver)
{
    CLayer::ConfigureLayerNameResolver(nullptr);
    ExpectFatal({{"No layer name resolver configured.", [] { CLayer::GetLayerByName("x"); }}});
}

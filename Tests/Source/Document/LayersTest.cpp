#include "BuildingBlocks/CCompositeGeometry.h"
#include "Common/Reports.h"
#include "TestLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

using testing::ElementsAre;
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
    source.layers = {{"1"}, {"2", true, false}, {"3"}};
    source.elements.resize(1);
    CTestLayout layout;
    // Without its records a layer repeats the one before.
    ASSERT_EQ(layout.LoadRecords(Layout(source).Replace(502, "", 2).Replace(503, "", 2)), CLayout::kLoaded);
    const CLayer* third = layout.GetLayerList()->GetLayerAtIndex(2);
    EXPECT_TRUE(third->GetLocked() && !third->GetIsVisible());
    // An empty name record ends the list where it stands, a missing count before it begins.
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(501, "", 1)), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), ElementsAre("1"));
    EXPECT_THAT(layout.GetElements(), SizeIs(1));
    EXPECT_EQ(layout.LoadRecords(Layout(source).Replace(500, "")), CLayout::kLoaded);
    EXPECT_THAT(layout.LayerNames(), IsEmpty());
    EXPECT_THAT(layout.GetElements(), SizeIs(1));
    std::string message;
    EXPECT_FALSE(CLayerManager("old").Load(nullptr, 3, message)); // of whose section nothing is read
    EXPECT_NE(message, "");
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
}

TEST(Layers, MisuseIsReportedAndChangesNothing)
{
    CReports reports;
    testing::internal::CaptureStderr();
    CTestLayout layout;
    CLayerManager& layers = *layout.GetLayerList();
    CLayer stranger("stranger");
    layers.DeleteLayer(layers.GetLayerAtIndex(0)); // the last one
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
    EXPECT_THAT(reports.mAlerts, SizeIs(6));
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

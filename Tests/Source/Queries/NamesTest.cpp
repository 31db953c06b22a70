#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Common/Reports.h"
#include "Elements/Utilities/UElementNameGenerator.h"
#include "Layouts/CLayout.h"
#include "Preferences/CVLPreferences.h"
#include "Tracks.h"
#include "UnitLength/UUnits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {
/// Changed preferences are put back at the end.
class ElementNames : public testing::Test {
protected:
    ~ElementNames() override { *mPreferences = mBefore; }

    CVLPreferences* const mPreferences = CVLPreferences::Instance();
    const CVLPreferences mBefore = *mPreferences;
};
} // namespace

TEST_F(ElementNames, OfGraphicsAreTheirKeys)
{
    const struct {
        CBasicGeometry* component;
        const char* name;
        size_t warnings;
    } cases[] = {{new CTextBIG, "kLocStrIdx_GenericTextName", 0},
                 {new COvalBIG, "kLocStrIdx_GenericCircleName", 0},
                 {new CPolyBIG, "kLocStrIdx_GenericRectName", 1}, // without a third point
                 {new CStraightBIG, "???", 1}};
    for (const auto& c : cases) {
        CCompositeGeometry element;
        element.AppendBIG(c.component);
        const CReports reports;
        EXPECT_STREQ(UElementNameGenerator::GetGenericGraphicElementName(UUnits::kInch, &element), c.name);
        EXPECT_EQ(reports.mMessages.size(), c.warnings) << c.name;
    }
}

TEST_F(ElementNames, AndDescriptionsOfGenericFlexibleTracks)
{
    for (const int unit : {UUnits::kMillimetre - 1, UUnits::kFoot + 1}) {
        mPreferences->mUnits = unit;
        CTracks elements;
        elements.Add(0)->AppendBIG(new CFlexTrackBIG);
        elements.Add(0)->AppendBIG(new CFlexTrackBIG);
        elements[1]->SetRailSetName("Lib");
        UElementVectorOperations::UpdateGenericFlexNameDescription(elements.All());
        EXPECT_THAT(Names(elements.All()), ElementsAre("kLocStrIdx_GenericFlextrackName", "1"));
        EXPECT_STREQ(elements[0]->GetDescription(), "kLocStrIdx_GenericFlexDescMaxLen");
    }
}

TEST_F(ElementNames, HavePrefixesWhereTheyAreShown)
{
    CCompositeGeometry element;
    element.SetName("A");
    element.SetPrefix("W");
    std::string label = "old";
    const auto labelOf = [&](CLayout* layout) {
        UElementNameGenerator::GetPrefixedElementName(&element, layout, label);
        return label;
    };
    mPreferences->mDefaultShowPrefix = false;
    CLayout without;
    EXPECT_EQ(labelOf(nullptr), "A");
    mPreferences->mDefaultShowPrefix = true;
    EXPECT_EQ(labelOf(nullptr), "W-A");
    EXPECT_EQ(labelOf(&without), "A"); // the layout's own choice counts
    without.SetElementLabelFlag(CLayout::kShowPrefix);
    mPreferences->mDefaultShowPrefix = false;
    EXPECT_EQ(labelOf(&without), "W-A");
    element.SetPrefix("");
    EXPECT_EQ(labelOf(&without), "A");
}

#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Common/Reports.h"
#include "Elements/Utilities/UElementNameGenerator.h"
#include "Layouts/CLayout.h"
#include "Preferences/CVLPreferences.h"
#include "Tracks.h"
#include "UnitLength/UUnits.h"

#include <gtest/gtest.h>

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
    const std::tuple<CBasicGeometry*, const char*, size_t> cases[] = {
        {new CTextBIG, "kLocStrIdx_GenericTextName", 0},
        {new CPolyBIG, "kLocStrIdx_GenericRectName", 1}, // without a third point
        {new CStraightBIG, "???", 1}};
    for (const auto& [component, name, warnings] : cases) {
        CCompositeGeometry element;
        element.AppendBIG(component);
        const CReports reports;
        EXPECT_STREQ(UElementNameGenerator::GetGenericGraphicElementName(UUnits::kInch, &element), name);
        EXPECT_EQ(reports.mMessages.size(), warnings) << name;
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

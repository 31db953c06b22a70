#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "Common/Reports.h"
#include "Elements/Utilities/UElementNameGenerator.h"
#include "Elements/Utilities/UElementNameUtils.h"
#include "Layouts/CLayout.h"
#include "Preferences/CVLPreferences.h"
#include "Tracks.h"
#include "UnitLength/UUnits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace {
constexpr auto kWarning = Platform::eReportLevel::kWarning;

/// A component that claims to be of another type.
class CPretender : public CStraightBIG {
public:
    explicit CPretender(int type) : mType(type) {}
    int GetType() const override { return mType; }

private:
    int mType;
};

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
    const auto name = [](CBasicGeometry* component) -> std::string {
        CCompositeGeometry element;
        if (component != nullptr) {
            element.AppendBIG(component);
        }
        return UElementNameGenerator::GetGenericGraphicElementName(UUnits::kInch, &element);
    };
    const CReports reports;
    EXPECT_EQ(name(new CTextBIG), "kLocStrIdx_GenericTextName");
    EXPECT_EQ(name(new COvalBIG), "kLocStrIdx_GenericCircleName");
    EXPECT_TRUE(reports.mMessages.empty());
    const std::string rectangle = "kLocStrIdx_GenericRectName";
    EXPECT_EQ(name(new CPolyBIG), rectangle); // without a third point
    EXPECT_EQ(name(new CPretender(kOvalType)), rectangle);
    EXPECT_EQ(name(new CPretender(kPolyType)), rectangle);
    EXPECT_EQ(name(new CStraightBIG), "???");
    EXPECT_EQ(name(nullptr), "???");
    const auto isRect = Pair(kWarning, HasSubstr("IsRectElement"));
    const auto unrecognized = Pair(kWarning, "static char *UElementNameGenerator::GetGenericGraphicElementName(int, "
                                             "CCompositeGeometry *): Unrecognized element type");
    EXPECT_THAT(reports.mMessages,
                ElementsAre(isRect, Pair(kWarning, "Sorry, the given item doesn't contain a circle component"), isRect,
                            Pair(kWarning, "Sorry, the given item doesn't contain a polygon component"), unrecognized,
                            unrecognized));
}

TEST_F(ElementNames, AndDescriptionsOfGenericFlexibleTracks)
{
    for (const int unit : {UUnits::kMillimetre - 1, +UUnits::kMillimetre, +UUnits::kFoot, UUnits::kFoot + 1}) {
        SCOPED_TRACE(unit);
        mPreferences->mUnits = unit;
        CTracks elements;
        elements.Add(0)->AppendBIG(new CFlexTrackBIG);
        elements.Add(0)->AppendBIG(new CFlexTrackBIG);
        elements.Add(0)->AppendBIG(new CPolyBIG);
        elements.Add(0)->AppendBIG(new CPretender(kFlexTrackType));
        elements[1]->SetRailSetName("Lib");
        UElementVectorOperations::UpdateGenericFlexNameDescription(elements.All());
        EXPECT_THAT(Names(elements.All()), ElementsAre("kLocStrIdx_GenericFlextrackName", "1", "2", "3"));
        EXPECT_STREQ(elements[0]->GetDescription(), "kLocStrIdx_GenericFlexDescMaxLen");
        EXPECT_STREQ(elements[1]->GetDescription(), "-");
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

TEST_F(ElementNames, StandInTheMiddleOfTheElement)
{
    auto circle = std::make_unique<COvalBIG>();
    circle->SpecifyOvalGeometry(10, 20, 50, 1);
    CCompositeGeometry element;
    element.AppendBIG(circle.release());
    element.SetPosition(1000, 2000);
    const CPoint middle(1000 + 10 + 50, 2000 + 20 + 50, 0);
    const CPoint corner = UElementNameUtils::GetElementNamePosition(&element, nullptr, {400, 8}); // wider than the box
    EXPECT_DOUBLE_EQ(corner.x + 200, middle.x);
    EXPECT_DOUBLE_EQ(corner.y + 4, middle.y);
}

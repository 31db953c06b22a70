#include "Elements/Utilities/CMissingLayoutFontsDoctor.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layers/CLayer.h"
#include "Source/Elements/Elements.h"
#include "Source/Geometry/Shapes.h"
#include "UnitLength/URailConstants.h"

#include <algorithm>
#include <climits>
#include <cstring>

using testing::ElementsAre;

TEST(UElementInspector, KindsOfElements)
{
    using tTest = bool (*)(const CCompositeGeometry*);
    static constexpr tTest kTests[] = {&UElementInspector::IsFlexElement,    &UElementInspector::IsGenericFlex,
                                       &UElementInspector::IsTextElement,    &UElementInspector::IsCircleElement,
                                       &UElementInspector::IsPolyElement,    &UElementInspector::IsTrackElement,
                                       &UElementInspector::IsCurvedTrack,    &UElementInspector::IsStraightTrack,
                                       &UElementInspector::HasPolyHandles,   &UElementInspector::IsAdjustableLineWidth,
                                       &UElementInspector::IsEditableElement};
    // One character a test, in that order; the first line of the generic element, the second of one of a library.
    const struct {
        int type;
        const char* generic;
        const char* library;
    } cases[] = {{kStraightType, "-----+-+---", "-----+-+---"},
                 {kCurveType, "-----++----", "-----++----"},
                 {kPolyType, "----+---+++", "----+------"},
                 {kTextType, "--+-------+", "--+--------"},
                 {kOvalType, "---+-----++", "---+-------"},
                 {kFlexTrackType, "++--++--+-+", "+---++--+-+"},
                 {0, "-----------", "-----------"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.type);
        for (const char* library : {"-", "Alpha"}) {
            CCompositeGeometry element;
            element.SetRailSetName(library);
            if (c.type != 0) {
                element.AppendBIG(NewComponent(c.type));
            }
            std::string answers;
            for (const tTest test : kTests) {
                answers += test(&element) ? '+' : '-';
            }
            EXPECT_EQ(answers, *library == '-' ? c.generic : c.library) << library;
            EXPECT_EQ(UElementInspector::IsGenericElement(&element), *library == '-');
        }
    }
}

TEST(UElementInspector, ThreeNamesForAPolygonAndAWarningEachTime)
{
    CReports reports;
    const auto warning = [](const char* name) {
        return std::string("static bool UElementInspector::") + name +
               "(const CCompositeGeometry *): Need replacement for SetPolySubType!";
    };
    for (const int type : {kPolyType, kFlexTrackType}) {
        const tElement element = NewElement(type);
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(UElementInspector::IsPolyElement(element.get()));
            EXPECT_TRUE(UElementInspector::IsLineElement(element.get()));
            EXPECT_TRUE(UElementInspector::IsRectElement(element.get()));
            EXPECT_THAT(TakeWarnings(reports),
                        ElementsAre(warning("IsPolyElement"), warning("IsLineElement"), warning("IsRectElement")));
        }
    }
    const tElement circle = NewElement(kOvalType);
    EXPECT_FALSE(UElementInspector::IsPolyElement(circle.get()) || UElementInspector::IsLineElement(circle.get()) ||
                 UElementInspector::IsRectElement(circle.get()));
    EXPECT_THAT(TakeWarnings(reports), ElementsAre());
}

TEST(UElementInspector, LooksBehindTheFirstComponent)
{
    CCompositeGeometry element;
    element.AppendBIG(NewComponent(kTextType));
    element.AppendBIG(NewComponent(kStraightType));
    EXPECT_TRUE(UElementInspector::IsTrackElement(&element) && UElementInspector::IsStraightTrack(&element));
    EXPECT_TRUE(UElementInspector::IsTextElement(&element));
    EXPECT_FALSE(UElementInspector::HasFlexComponent(&element));
    element.AppendBIG(NewComponent(kFlexTrackType));
    EXPECT_TRUE(UElementInspector::HasFlexComponent(&element));
    EXPECT_FALSE(UElementInspector::IsFlexElement(&element));
    EXPECT_FALSE(UElementInspector::IsSingleTrackElement(&element) || UElementInspector::IsStraightTrack(&element));

    EXPECT_FALSE(UElementInspector::IsConnected(&element));
    CJoint partner;
    element.GetBIGAtIndex(1)->GetJoint(1)->ConnectToJoint(&partner);
    EXPECT_FALSE(UElementInspector::IsConnected(&element)) << "that joint is not allowed";
    partner.DisconnectJoint();
    element.GetBIGAtIndex(1)->GetJoint(0)->ConnectToJoint(&partner);
    EXPECT_TRUE(UElementInspector::IsConnected(&element));

    CLayer layer("x");
    element.SetLayer(&layer);
    EXPECT_TRUE(UElementInspector::IsSelectable(&element));
    layer.SetLocked(true);
    EXPECT_FALSE(UElementInspector::IsSelectable(&element));
    layer.SetLocked(false);
    layer.SetVisible(false);
    EXPECT_FALSE(UElementInspector::IsSelectable(&element));
}

TEST(UElementVectorOperations, FiltersAndFinds)
{
    CLayer layer("x");
    std::vector<tElement> owned;
    owned.push_back(NewText("a"));
    owned.push_back(NewElement(kFlexTrackType, "F"));
    owned.push_back(NewElement(kFlexTrackType, "LF", "Alpha"));
    owned.push_back(NewElement(kTextType, "F", "Alpha"));
    owned[1]->SetLayer(&layer);
    owned[3]->SetLayer(&layer);
    const auto all = Pointers(owned);
    std::vector<CCompositeGeometry*> out = {nullptr};
    UElementVectorOperations::GetAllTextElements(all, out);
    EXPECT_THAT(out, ElementsAre(all[0], all[3]));
    UElementVectorOperations::GetAllGenericFlextracks(all, out);
    EXPECT_THAT(out, ElementsAre(all[1]));
    UElementVectorOperations::GetAllElementsForLayer(all, &layer, out);
    EXPECT_THAT(out, ElementsAre(all[1], all[3]));
    UElementVectorOperations::GetAllElementsForLayer(out, &layer, out); // into itself
    EXPECT_THAT(out, ElementsAre(all[1], all[3]));
    UElementVectorOperations::GetAllElementsForLayer(all, nullptr, out);
    EXPECT_THAT(out, ElementsAre(all[0], all[2]));
    EXPECT_EQ(UElementVectorOperations::FindElement(all, "F"), all[1]);
    EXPECT_EQ(UElementVectorOperations::FindElement(all, "f"), nullptr);
    out = {all[0]};
    UElementVectorOperations::CloneItemVector(all, out);
    ASSERT_EQ(out.size(), 5u);
    EXPECT_TRUE(out[1] != all[0] && out[2]->Equals(all[1]));
    out.erase(out.begin());
    UElementVectorOperations::DeleteItemVector(out);
    out = {nullptr};
    EXPECT_EXIT(UElementVectorOperations::DeleteItemVector(out), testing::ExitedWithCode(0),
                "DeleteItemVector(.|\n)*Invalid CCompositeGeometry items");
}

TEST(UElementVectorOperations, Sums)
{
    std::vector<tElement> owned;
    int sum = 7;
    int currency = 0;
    UElementVectorOperations::GetElementVectorCostsCurrency({}, sum, currency);
    EXPECT_EQ(sum, 0);
    EXPECT_EQ(currency, 127);
    const auto add = [&owned](int type, int price, int code, int scale) {
        owned.push_back(NewElement(type));
        owned.back()->SetPrice(price);
        owned.back()->SetCurrency(code);
        owned.back()->SetModelScale(scale);
        return Pointers(owned);
    };
    EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale({}), 22);
    UElementVectorOperations::GetElementVectorCostsCurrency(add(kOvalType, 5, 1, 17), sum, currency);
    EXPECT_EQ(sum, 5);
    EXPECT_EQ(currency, 127) << "graphics alone";
    EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale(Pointers(owned)), 22);
    add(kStraightType, 10, 2, URailConstants::kScaleN);
    UElementVectorOperations::GetElementVectorCostsCurrency(add(kCurveType, INT_MAX, 3, 14), sum, currency);
    EXPECT_EQ(sum, INT_MAX) << "not wrapped around";
    EXPECT_EQ(currency, 2) << "of the first track";
    EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale(Pointers(owned)), URailConstants::kScaleN)
        << "the first of two with the same gauge";
    add(kOvalType, INT_MIN, 3, 99);
    UElementVectorOperations::GetElementVectorCostsCurrency(Pointers(owned), sum, currency);
    EXPECT_EQ(sum, 14) << "the parts may lie beyond";
    UElementVectorOperations::GetElementVectorCostsCurrency(add(kOvalType, INT_MIN, 3, 99), sum, currency);
    EXPECT_EQ(sum, INT_MIN + 14);
    UElementVectorOperations::GetElementVectorCostsCurrency(add(kOvalType, INT_MIN, 3, 99), sum, currency);
    EXPECT_EQ(sum, INT_MIN);
    EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale(Pointers(owned)), 99) << "unknown, gauge 1";
    EXPECT_NEAR(UElementVectorOperations::GetElementVectorRailLength(Pointers(owned), 1),
                200.5 + 437.5 * 22.5 * kRadiansPerDegree, kTolerance);
    EXPECT_EQ(UElementVectorOperations::GetNumberOfJoints(Pointers(owned)), 2) << "the allowed ones";
    EXPECT_FALSE(UElementVectorOperations::IsAdjustableLineWidth(Pointers(owned)));
    EXPECT_TRUE(UElementVectorOperations::IsAdjustableLineWidth({owned[0].get(), owned[3].get()}));
    EXPECT_FALSE(UElementVectorOperations::IsAdjustableLineWidth({}));
}

TEST(UElementVectorOperations, ALocationIsUnobstructedUnlessSomethingLiesThere)
{
    CRandom random(51);
    int obstructed = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<tElement> owned[2];
        for (auto& elements : owned) {
            for (int i = random.Below(12); i > 0; --i) {
                elements.push_back(std::make_unique<CCompositeGeometry>());
                // A raster of a third of the tolerance, so that all distances around it occur.
                elements.back()->SetPosition(random.Below(12) / 3000.0 + 500, random.Below(12) / 3000.0);
                elements.back()->SetZPosition(random.Between(0, 100));
            }
        }
        bool expected = true;
        for (const tElement& a : owned[0]) {
            for (const tElement& b : owned[1]) {
                expected = expected && (std::fabs(a->GetPosition().x - b->GetPosition().x) >= 0.001 ||
                                        std::fabs(a->GetPosition().y - b->GetPosition().y) >= 0.001);
            }
        }
        obstructed += expected ? 0 : 1;
        EXPECT_EQ(UElementVectorOperations::IsLocationUnobstructed(Pointers(owned[0]), Pointers(owned[1])), expected);
    }
    EXPECT_GT(obstructed, 50);
    EXPECT_LT(obstructed, 250);
}

TEST(UElementVectorOperations, AttributesOfAll)
{
    std::vector<tElement> owned;
    owned.push_back(NewElement(kOvalType));
    owned.push_back(NewElement(kStraightType));
    owned.push_back(NewElement(kOvalType));
    const auto all = Pointers(owned);
    UElementVectorOperations::ApplyTrackbedWidth(all, 33);
    EXPECT_EQ(owned[1]->GetBIGAtIndex(0)->GetTrackbedWidth(), 33.0);
    const int zOrders[] = {5, -3, 5};
    for (size_t i = 0; i < 3; ++i) {
        owned[i]->SetZOrder(zOrders[i]);
        owned[i]->SetPosition(100.0 * static_cast<double>(i), 10);
        owned[i]->SetZPosition(-7.0 - static_cast<double>(i));
    }
    EXPECT_EQ(UElementVectorOperations::FindElementWithMinZOrder(all), all[1]);
    EXPECT_EQ(UElementVectorOperations::FindElementWithMaxZOrder(all), all[0]) << "the first of the highest";
    EXPECT_EQ(UElementVectorOperations::FindElementWithMaxZOrder({}), nullptr);
    UElementVectorOperations::tZOrders stored;
    UElementVectorOperations::StoreElementVectorZOrder({all[0], all[1]}, stored);
    for (CCompositeGeometry* element : all) {
        element->SetZOrder(99);
    }
    UElementVectorOperations::ApplyZOrder(all, stored);
    EXPECT_EQ(all[1]->GetZOrder(), -3);
    EXPECT_EQ(all[2]->GetZOrder(), 99) << "unknown to the map";
    EXPECT_EQ(UElementVectorOperations::GetElementVectorMaxZPosition(all), -7.0);
    EXPECT_EQ(UElementVectorOperations::GetElementVectorMaxZPosition({}), 0.0);

    DRect bounds = {1, 2, 3, 4};
    CPoint centre(1, 2, 3);
    UElementVectorOperations::GetElementVectorBounds({}, bounds);
    UElementVectorOperations::GetElementVectorCenter({}, centre);
    EXPECT_TRUE(bounds.top == 1 && bounds.right == 4 && centre.x == 1);
    UElementVectorOperations::GetElementVectorBounds({all[0], all[2]}, bounds);
    EXPECT_EQ(bounds.left, 1.5); // a circle of radius 12.5 at offset (1.5, -2.25)
    EXPECT_EQ(bounds.right, 226.5);
    EXPECT_EQ(bounds.top, 7.75);
    UElementVectorOperations::GetElementVectorCenter({all[0], all[2]}, centre);
    ExpectSamePlace(centre, CPoint(114, 20.25, 3));

    const int before = CJoint::sNumHiLiteJoints;
    owned[1]->GetBIGAtIndex(0)->GetJoint(1)->SetFlag(4);
    UElementVectorOperations::ResetJointFlags(all);
    UElementVectorOperations::ResetJointFlags(all);
    EXPECT_EQ(CJoint::sNumHiLiteJoints, before) << "only what was marked";
    EXPECT_EQ(owned[1]->GetBIGAtIndex(0)->GetJoint(1)->GetFlag(), 0);
}

TEST(CMissingLayoutFontsDoctor, ListsEachMissingFontOnce)
{
    CReports reports;
    std::vector<tElement> owned;
    const CMissingLayoutFontsDoctor nothing(Pointers(owned));
    std::vector<std::string> missing = {"first"};
    EXPECT_EQ(nothing.GetMissingFontsList(missing), 1);
    owned.push_back(NewElement(kStraightType));
    for (const char* font : {"No Such Font", "DejaVu Sans",
                             "\x80"
                             "pfel Gr\x9F\xA7 e",
                             "No Such Font", "Absent Font", "no such font"}) {
        owned.push_back(NewText("x", font));
    }
    CMissingLayoutFontsDoctor doctor(Pointers(owned));
    EXPECT_EQ(doctor.GetMissingFontsList(missing), 5);
    EXPECT_THAT(missing, ElementsAre("first", "Absent Font", "No Such Font", "no such font", "\x80pfel Gr\x9F\xA7 e"))
        << "in byte order, behind what was there";
    owned.clear();
    owned.push_back(NewText("x", "Another"));
    doctor.RepairMissingFonts(Pointers(owned));
    missing.clear();
    EXPECT_EQ(doctor.GetMissingFontsList(missing), 5);
    EXPECT_EQ(missing[1], "Another");
    EXPECT_TRUE(reports.mMessages.empty());
}

#include "Elements/Utilities/CMissingLayoutFontsDoctor.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementVectorOperations.h"
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

TEST(UElementVectorOperations, Sums)
{
    std::vector<tElement> owned;
    int sum = 7;
    int currency = 0;
    EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale({}), 22);
    const struct {
        int type, price, currency, scale;           ///< of an element more
        int sum, common, smallest;                  ///< of all so far
    } steps[] = {{kOvalType, 5, 1, 17, 5, 127, 22}, // no track
                 {kStraightType, 10, 2, URailConstants::kScaleN, 15, 2, URailConstants::kScaleN},
                 {kCurveType, INT_MAX, 3, 14, INT_MAX, 2, URailConstants::kScaleN}, // the first of one gauge
                 {kOvalType, INT_MIN, 3, 99, 14, 2, 99},                            // unknown, gauge 1
                 {kOvalType, INT_MIN, 3, 99, INT_MIN + 14, 2, 99},
                 {kOvalType, INT_MIN, 3, 99, INT_MIN, 2, 99}};
    for (const auto& step : steps) {
        SCOPED_TRACE(&step - steps);
        owned.push_back(NewElement(step.type));
        owned.back()->SetPrice(step.price);
        owned.back()->SetCurrency(step.currency);
        owned.back()->SetModelScale(step.scale);
        UElementVectorOperations::GetElementVectorCostsCurrency(Pointers(owned), sum, currency);
        EXPECT_EQ(sum, step.sum);
        EXPECT_EQ(currency, step.common);
        EXPECT_EQ(UElementVectorOperations::GetElementVectorSmallestScale(Pointers(owned)), step.smallest);
    }
    EXPECT_NEAR(UElementVectorOperations::GetElementVectorRailLength(Pointers(owned), 1),
                200.5 + 437.5 * 22.5 * M_PI / 180.0, kTolerance);
}

TEST(CMissingLayoutFontsDoctor, ListsEachMissingFontOnce)
{
    std::vector<tElement> owned;
    owned.push_back(NewElement(kStraightType));
    for (const char* font :
         {"No Such Font", "DejaVu Sans", "\x80pfel", "No Such Font", "Absent Font", "no such font"}) {
        owned.push_back(NewText("x", font));
    }
    CMissingLayoutFontsDoctor doctor(Pointers(owned));
    std::vector<std::string> missing = {"first"};
    EXPECT_EQ(doctor.GetMissingFontsList(missing), 5);
    EXPECT_THAT(missing, ElementsAre("first", "Absent Font", "No Such Font", "no such font", "\x80pfel"))
        << "in byte order, behind what was there";
}

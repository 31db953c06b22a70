#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "LibraryBuilder.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/URailsetQueries.h"
#include "UnitLength/UUnits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::Pair;

namespace {
/// A flexible track that passes for a straight one.
class CDisguisedFlex : public CFlexTrackBIG {
public:
    using CFlexTrackBIG::CFlexTrackBIG;
    int GetType() const override { return kStraightType; }
};

/// A component that only claims to be a curve.
class CSupposedCurve : public CStraightBIG {
public:
    int GetType() const override { return kCurveType; }
};

class RailsetQueries : public testing::Test {
protected:
    CCompositeGeometry* Add(const char* name, std::initializer_list<CBasicGeometry*> components)
    {
        auto* element = new CCompositeGeometry;
        element->SetName(name);
        element->SetManufacturer("Maker");
        for (CBasicGeometry* component : components) {
            element->AppendBIG(component);
        }
        mLibrary.Append(element);
        return element;
    }
    CCompositeGeometry* AddCurve(const char* name, double radius, double arcAngle = 30.0)
    {
        return Add(name, {Curve(radius, arcAngle)});
    }
    static CCurveBIG* Curve(double radius, double arcAngle)
    {
        auto* curve = new CCurveBIG;
        curve->SpecifyCurveGeometry(0, 0, radius, arcAngle, 0, 16.5, 33, true, true);
        return curve;
    }
    template <typename tFlex>
    static tFlex* Flex(double maxLength)
    {
        auto* flex = new tFlex;
        flex->SpecifyFlexGeometry(0, 0, {{0, 0, 0}, {100, 0, 0}}, 0, 33, maxLength);
        return flex;
    }

    CRailSet mLibrary{"/libraries/Lib"};
};
} // namespace

TEST_F(RailsetQueries, ScaleAndTypeOfFilesThatLoad)
{
    const CLibraryFolder folder;
    tLibrary source;
    source.scale = 22;
    source.contentType = 3;
    source.elements = {Article("1"), Article("2")};
    const std::string good = Library(source).Bytes();
    int scale = -1;
    tRailSetContentType type = -1;
    EXPECT_FALSE(URailsetQueries::GetModelScaleAndType(folder.Write("a", "RCig" + good.substr(4)), scale, type));
    EXPECT_FALSE(URailsetQueries::GetModelScaleAndType(folder.PathOf("missing"), scale, type));
    EXPECT_FALSE(
        URailsetQueries::GetModelScaleAndType(folder.Write("b", good.substr(0, good.find("RCig"))), scale, type));
    EXPECT_EQ(scale, -1);
    EXPECT_EQ(type, -1);
    EXPECT_TRUE(URailsetQueries::GetModelScaleAndType(folder.Write("c", good), scale, type));
    EXPECT_EQ(scale, 22);
    EXPECT_EQ(type, 3);
}

TEST_F(RailsetQueries, AnEmptyLibraryAddsNothing)
{
    EXPECT_EQ(URailsetQueries::GetNumberOfTrackElements(&mLibrary), 0);
    EXPECT_EQ(URailsetQueries::GetNumberOfSingleTrackElements(&mLibrary), 0);
    std::vector<double> radii = {1.0};
    std::vector<std::string> texts = {"before"};
    URailsetQueries::tElementMap elements = {{"before", nullptr}};
    URailsetQueries::GetListOfRadiiInLibrary(&mLibrary, UUnits::kMillimetre, radii, texts);
    URailsetQueries::GetDescriptiveMapOfCurvedTracksInLibrary(&mLibrary, UUnits::kMillimetre, elements);
    URailsetQueries::GetFlexTracks(&mLibrary, UUnits::kMillimetre, elements);
    EXPECT_THAT(radii, ElementsAre(1.0));
    EXPECT_THAT(texts, ElementsAre("before"));
    EXPECT_THAT(elements, ElementsAre(Pair("before", nullptr)));
}

TEST_F(RailsetQueries, CountsElementsWithTrack)
{
    Add("none", {});
    Add("symbol", {new COvalBIG});
    Add("one behind a symbol", {new COvalBIG, new CStraightBIG});
    Add("flexible", {Flex<CFlexTrackBIG>(500)});
    Add("turnout", {new CStraightBIG, Curve(360, 30)});
    EXPECT_EQ(URailsetQueries::GetNumberOfTrackElements(&mLibrary), 3);
    EXPECT_EQ(URailsetQueries::GetNumberOfSingleTrackElements(&mLibrary), 2);
}

TEST_F(RailsetQueries, RadiiAreListedOnce)
{
    AddCurve("1", 360.0);
    AddCurve("2", 360.0004); // the same
    AddCurve("3", 360.002);
    Add("turnout", {new CStraightBIG, Curve(500, 30)});
    Add("behind a symbol", {new COvalBIG, Curve(437.5, 30)});
    AddCurve("4", 359.9995);
    AddCurve("5", 300.0);
    std::vector<double> radii;
    std::vector<std::string> texts;
    URailsetQueries::GetListOfRadiiInLibrary(&mLibrary, UUnits::kMillimetre, radii, texts);
    EXPECT_THAT(radii, ElementsAre(360.0, 360.002, 437.5, 300.0));
    EXPECT_THAT(texts, ElementsAre("/libraries/Lib,  1:  360.0 mm", "/libraries/Lib,  2:  360.0 mm",
                                   "/libraries/Lib,  3:  437.5 mm", "/libraries/Lib,  4:  300.0 mm"));

    AddCurve("6", 600.0); // a second call counts anew, and adds only what is new
    URailsetQueries::GetListOfRadiiInLibrary(&mLibrary, UUnits::kInch, radii, texts);
    EXPECT_THAT(radii, ElementsAre(360.0, 360.002, 437.5, 300.0, 600.0));
    EXPECT_EQ(texts.size(), 5u);
    EXPECT_EQ(texts.back(), "/libraries/Lib,  1:  23.62 \"");
}

TEST_F(RailsetQueries, RadiiAreSoughtAsInThePlainList)
{
    CRandom random(5);
    std::vector<double> expected = {NAN, -5.0, 1e9};
    std::vector<double> radii = expected;
    for (int i = 0; i < 300; ++i) {
        const double radius = 300.0 + static_cast<double>(random.Int(0, 10000)) * 0.00025; // often near another one
        AddCurve("x", radius);
        if (!URailsetQueries::VectorContainsRadius(radius, expected)) {
            expected.push_back(radius);
        }
    }
    std::vector<std::string> texts;
    URailsetQueries::GetListOfRadiiInLibrary(&mLibrary, UUnits::kMillimetre, radii, texts);
    ASSERT_EQ(radii.size(), expected.size());
    EXPECT_TRUE(std::equal(radii.begin() + 1, radii.end(), expected.begin() + 1));
    EXPECT_EQ(texts[99], "/libraries/Lib, 100:  " + std::string(UUnits::BuildMeasureUnitString(1, radii[102])));
    EXPECT_FALSE(URailsetQueries::VectorContainsRadius(NAN, {NAN}));
}

TEST_F(RailsetQueries, CurvesAreDescribedInEachUnit)
{
    CCompositeGeometry* const first = AddCurve("2231", 438.0);
    AddCurve("2231", 438.0); // the first of a text stays
    CCompositeGeometry* const narrow = AddCurve("2221", 360.0, -22.46);
    Add("turnout", {new CStraightBIG, Curve(500, 30)});
    Add("straight", {new CStraightBIG});
    const struct {
        int unit;
        const char* narrow;
        const char* wide;
    } cases[] = {
        {UUnits::kMillimetre, "Maker 2221 (R 360.0 mm, -22.5)", "Maker 2231 (R 438.0 mm, 30.0)"},
        {UUnits::kCentimetre, "Maker 2221 (R 36.0 cm, -22.5)", "Maker 2231 (R 43.8 cm, 30.0)"},
        {UUnits::kInch, "Maker 2221 (R 14.17 \", -22.5)", "Maker 2231 (R 17.24 \", 30.0)"},
        {UUnits::kFoot, "Maker 2221 (R 1.18 Ft, -22.5)", "Maker 2231 (R 1.44 Ft, 30.0)"},
    };
    for (const auto& c : cases) {
        URailsetQueries::tElementMap elements;
        URailsetQueries::GetDescriptiveMapOfCurvedTracksInLibrary(&mLibrary, c.unit, elements);
        EXPECT_THAT(elements, ElementsAre(Pair(c.narrow, narrow), Pair(c.wide, first)));
    }
}

TEST_F(RailsetQueries, FlexibleTracksArePassedOver)
{
    Add("flexible", {Flex<CFlexTrackBIG>(940)});
    Add("with a straight in front", {new CStraightBIG, Flex<CFlexTrackBIG>(940)});
    URailsetQueries::tElementMap elements;
    URailsetQueries::GetFlexTracks(&mLibrary, UUnits::kMillimetre, elements);
    EXPECT_THAT(elements, IsEmpty());

    CCompositeGeometry* const disguised = Add("2205", {Flex<CDisguisedFlex>(940)});
    Add("2205", {Flex<CDisguisedFlex>(940)});
    URailsetQueries::GetFlexTracks(&mLibrary, UUnits::kMillimetre, elements);
    URailsetQueries::GetFlexTracks(&mLibrary, UUnits::kFoot, elements);
    EXPECT_THAT(elements,
                ElementsAre(Pair("Maker 2205 (3.08 Ft)", disguised), Pair("Maker 2205 (940.0 mm)", disguised)));
}

TEST_F(RailsetQueries, WhatIsNoFlexOrCurveIsFatal)
{
    std::vector<double> radii;
    std::vector<std::string> texts;
    URailsetQueries::tElementMap elements;
    Add("curve", {new CSupposedCurve});
    EXPECT_EXIT(URailsetQueries::GetListOfRadiiInLibrary(&mLibrary, 1, radii, texts), ExitedWithCode(0),
                "static void URailsetQueries::GetListOfRadiiInLibrary\\(.*No curve component found in geometry\\?");
    EXPECT_EXIT(URailsetQueries::GetDescriptiveMapOfCurvedTracksInLibrary(&mLibrary, 1, elements), ExitedWithCode(0),
                "GetDescriptiveMapOfCurvedTracksInLibrary\\(.*No curve component found in geometry\\?");
    EXPECT_EXIT(URailsetQueries::GetFlexTracks(&mLibrary, 1, elements), ExitedWithCode(0),
                "static void URailsetQueries::GetFlexTracks\\(.*No flex component found in geometry\\?");
}

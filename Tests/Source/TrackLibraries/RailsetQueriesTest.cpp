#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/URailsetQueries.h"
#include "UnitLength/UUnits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {
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

    CRailSet mLibrary{"/libraries/Lib"};
};
} // namespace

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

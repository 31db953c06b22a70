#include "BuildingBlocks/CCompositeGeometry.h"
#include "TrackLibraries/CRailSet.h"

#include <gtest/gtest.h>

TEST(RailSetList, FindsTheLastOfANameAndHandsItOut)
{
    CRailSet library("Library");
    for (const char* name : {"A", "B", "A"}) {
        library.Append(new CCompositeGeometry);
        library.GetGeometries().back()->SetName(name);
    }
    const std::unique_ptr<CCompositeGeometry> last(library.GetGeometryAtIndex(2));
    EXPECT_EQ(library.FindGeometry("A"), last.get());
    EXPECT_EQ(library.GetGeometryAtIndex(3), nullptr);
    EXPECT_TRUE(library.Remove(last.get()));
    EXPECT_FALSE(library.Remove(last.get()));
    EXPECT_EQ(library.FindGeometry("A"), library.GetGeometryAtIndex(0));
}

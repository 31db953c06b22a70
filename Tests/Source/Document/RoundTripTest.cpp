#include "TestLayout.h"
#include "support/Files.h"

#include <gtest/gtest.h>

TEST(RoundTrip, ASecondSaveIsTheFirst)
{
    for (uint64_t seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(seed);
        CTestLayout layout;
        ASSERT_EQ(layout.LoadRecords(Layout(RandomLayout(seed, 23, false))), CLayout::kLoaded);
        CRecords first = layout.Saved();
        ASSERT_EQ(layout.LoadRecords(first), CLayout::kLoaded);
        EXPECT_EQ(layout.Saved().Replace(403, "").Bytes(), first.Replace(403, "").Bytes()); // but for the time
    }
}

TEST(RoundTrip, ZoomIsThatOfTheLayoutNotOfTheFile)
{
    CTestLayout layout;
    layout.SetZoomFactor(0.29); // whose product with 100 is a little less than 29
    tLayout source;
    source.zoom = 50;
    ASSERT_EQ(layout.LoadRecords(Layout(source)), CLayout::kLoaded);
    EXPECT_EQ(layout.GetZoomFactor(), 0.29);
    EXPECT_EQ(layout.Saved().IntOf(417), 29);
}

TEST(RoundTrip, SavingAnswersWhetherTheFileIsThere)
{
    const CTestFolder folder;
    CTestLayout layout;
    EXPECT_FALSE(layout.Save(nullptr)); // no name yet
    const std::string missing = folder.PathOf("missing/file");
    EXPECT_FALSE(layout.Save(&missing));
    const std::string path = folder.PathOf("layout.velmora");
    EXPECT_TRUE(layout.Save(&path));
    EXPECT_EQ(layout.GetFilename(), path);
    CTestLayout again;
    EXPECT_EQ(again.Load(path), CLayout::kLoaded);
    again.SetAuthor("Third");
    EXPECT_TRUE(again.Save(nullptr)); // the file it was loaded from
    EXPECT_EQ(CRecords::OfDocument(ReadFile(path)).TextOf(400), "Third");
}

#include "Common/Reports.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "TestStock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace {
CCountedCIG* MakeEntry(const char* library, const char* number, int count)
{
    CCompositeGeometry element;
    element.SetRailSetName(library);
    element.SetName(number);
    return new CCountedCIG(&element, count);
}
} // namespace

TEST(CStock, EntriesAreMergedFoundAndTakenOut)
{
    CStock stock;
    EXPECT_EQ(stock.AddElement(MakeEntry("Lib", "b", 2)), 1);
    EXPECT_EQ(stock.AddElement(MakeEntry("Lib", "B", 2147483647)), 1);
    EXPECT_EQ(stock.AddElement(MakeEntry("Lib", "a", 0)), 1);
    EXPECT_EQ(stock.AddElement(MakeEntry("Lib", "\x8A", -1)), 1);
    const std::unique_ptr<CCountedCIG> merged(MakeEntry("Lib", "b", 5));
    EXPECT_EQ(stock.AddElement(merged.get()), 0);
    EXPECT_THAT(Entries(stock), ElementsAre("Lib/B/2147483647", "Lib/a/0", "Lib/b/7", "Lib/\x8A/-1"));
    EXPECT_EQ(stock.GetSumOfElementTypes(), 4);
    EXPECT_EQ(stock.GetSumOfAllElements(), 2147483647) << "clamped";

    CStock::tElements before;
    EXPECT_EQ(stock.GetElements(before), 4);
    EXPECT_EQ(stock.RemoveZeroCountElements(), 2);
    EXPECT_EQ(before[1]->GetCount() + before[3]->GetCount(), -1) << "taken out, not destroyed";
    delete before[1];
    delete before[3];

    const std::unique_ptr<CCountedCIG> large(stock.FindElement("Lib", "B"));
    stock.RemoveElement(large.get());
    EXPECT_EQ(stock.GetSumOfAllElements(), 7);
}

TEST(CStock, RequiredIsWhatTheStockLacksByLibraryAndNumber)
{
    CStock stock;
    stock.AddElement(MakeEntry("Lib", "enough", 5));
    stock.AddElement(MakeEntry("Lib", "some", 2));
    stock.AddElement(MakeEntry("Other", "elsewhere", 9));
    UElementStatistics::tList list = {MakeEntry("Lib", "elsewhere", 3), MakeEntry("Lib", "enough", 3),
                                      MakeEntry("Lib", "some", 3), MakeEntry("Lib", "none", 0)};
    const UElementStatistics::tList all = list;
    UElementStatistics::GetRequiredElementStatistics(list, &stock);
    ASSERT_THAT(list, ElementsAre(all[0], all[2]));
    EXPECT_EQ(list[0]->GetCount(), 3);
    EXPECT_EQ(list[1]->GetCount(), 1);
    EXPECT_EQ(stock.FindElement("Lib", "some")->GetCount(), 2) << "the stock stays";
    UCountedElementVectorOperations::EraseAll(list);
}

TEST(CStock, RelativeNamesLieInTheApplicationsFolder)
{
    RegisterLibraries();
    const std::string old = getenv("XDG_DATA_HOME");
    setenv("XDG_DATA_HOME", TestPath("d\xC3\xA4ta").c_str(), 1);
    CStock stock;
    EXPECT_FALSE(stock.Load(nullptr));
    EXPECT_FALSE(stock.Save());
    EXPECT_FALSE(stock.SaveAs(""));
    stock.AddElement(MakeEntry("Alpha", "A1", 4));
    EXPECT_TRUE(stock.SaveAs("Stock.xml"));
    EXPECT_TRUE(stock.SaveAs("St\x9A-.xml")) << "in Mac OS Roman";
    EXPECT_TRUE(fs::exists(TestPath("d\xC3\xA4ta/Velmora/St\xC3\xB6-.xml")));

    CStock loaded;
    EXPECT_TRUE(loaded.Load("Stock.xml"));
    EXPECT_THAT(Entries(loaded), ElementsAre("Alpha/A1/4"));
    loaded.FindElement("Alpha", "A1")->IncCount(1);
    EXPECT_TRUE(loaded.Save());
    EXPECT_TRUE(loaded.Load(nullptr)) << "the same file again";
    EXPECT_THAT(Entries(loaded), ElementsAre("Alpha/A1/5"));
    EXPECT_FALSE(loaded.Load("missing.xml"));

    setenv("XDG_DATA_HOME", WriteTestFile("file", "no folder").c_str(), 1);
    const CReports reports;
    EXPECT_FALSE(stock.Load("no such folder/Stock.xml")); // does not exist from the current folder either
    EXPECT_EQ(reports.mMessages.at(0).second, "void CStock::LocalFileToAbsolutePath(): "
                                              "Failed to access 'Velmora' folder in 'Application Support'");
    setenv("XDG_DATA_HOME", old.c_str(), 1);
}

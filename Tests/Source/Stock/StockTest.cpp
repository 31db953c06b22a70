#include "Common/Reports.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "TestStock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using Platform::eReportLevel;
using testing::ElementsAre;
using testing::Pair;

namespace {
CCountedCIG* MakeEntry(const char* library, const char* number, int count)
{
    CCompositeGeometry element;
    element.SetRailSetName(library);
    element.SetName(number);
    return new CCountedCIG(&element, count);
}

/// Sets an environment variable while it lives.
class CVariable {
public:
    CVariable(const char* name, const std::string& value) : mName(name), mOld(getenv(name))
    {
        setenv(name, value.c_str(), 1);
    }
    ~CVariable() { setenv(mName, mOld.c_str(), 1); }

private:
    const char* mName;
    std::string mOld;
};
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
    EXPECT_EQ(stock.FindElement("Lib", "c"), nullptr);

    CStock::tElements before;
    EXPECT_EQ(stock.GetElements(before), 4);
    EXPECT_EQ(stock.RemoveZeroCountElements(), 2);
    EXPECT_EQ(stock.RemoveZeroCountElements(), 0);
    EXPECT_EQ(before[1]->GetCount() + before[3]->GetCount(), -1) << "taken out, not destroyed";
    delete before[1];
    delete before[3];

    const std::unique_ptr<CCountedCIG> large(stock.FindElement("Lib", "B"));
    stock.RemoveElement(large.get());
    EXPECT_EQ(stock.GetSumOfAllElements(), 7);
    stock.ClearStock();
    EXPECT_EQ(stock.GetElements(before), 0);
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
    const CVariable data("XDG_DATA_HOME", TestPath("d\xC3\xA4ta"));
    const std::string folder = TestPath("d\xC3\xA4ta/Velmora/");
    CStock stock;
    {
        const CReports reports;
        EXPECT_FALSE(stock.Load(nullptr));
        EXPECT_FALSE(stock.Save());
        EXPECT_FALSE(stock.SaveAs(""));
        const auto noName = Pair(eReportLevel::kInfo, "bool CStock::Save(): Failed to save - No filename supplied.");
        EXPECT_THAT(reports.mMessages, ElementsAre(noName, noName));
    }
    stock.AddElement(MakeEntry("Alpha", "A1", 4));
    EXPECT_TRUE(stock.SaveAs("Stock.xml"));
    EXPECT_TRUE(fs::exists(folder + "Stock.xml"));
    EXPECT_TRUE(stock.SaveAs("St\x9A-.xml")) << "in Mac OS Roman";
    EXPECT_TRUE(fs::exists(folder + "St\xC3\xB6-.xml"));

    CStock loaded;
    EXPECT_TRUE(loaded.Load("Stock.xml"));
    EXPECT_THAT(Entries(loaded), ElementsAre("Alpha/A1/4"));
    loaded.FindElement("Alpha", "A1")->IncCount(1);
    EXPECT_TRUE(loaded.Save());
    EXPECT_TRUE(loaded.Load(nullptr)) << "the same file again";
    EXPECT_THAT(Entries(loaded), ElementsAre("Alpha/A1/5"));
    EXPECT_TRUE(loaded.Load((folder + "St\xC3\xB6-.xml").c_str()));
    EXPECT_THAT(Entries(loaded), ElementsAre("Alpha/A1/4"));
    EXPECT_FALSE(loaded.Load("missing.xml"));
    EXPECT_EQ(loaded.GetSumOfElementTypes(), 0);
}

TEST(CStock, WithoutTheApplicationsFolderTheNameStays)
{
    const std::string function = "void CStock::LocalFileToAbsolutePath(): ";
    const std::string name = "no such folder/Stock.xml"; // does not exist from the current folder either
    CStock stock;
    const CReports reports;
    {
        const CVariable data("XDG_DATA_HOME", WriteTestFile("file", "no folder"));
        EXPECT_FALSE(stock.Load(name.c_str()));
    }
    {
        const CVariable data("XDG_DATA_HOME", TestPath(std::string(200, 'x') + "/" + std::string(100, 'x')));
        EXPECT_FALSE(stock.Load(name.c_str()));
    }
    ASSERT_EQ(reports.mMessages.size(), 3u); // the second is that of the path's unit
    EXPECT_EQ(reports.mMessages[0].second, function + "Failed to access 'Velmora' folder in 'Application Support'");
    EXPECT_EQ(reports.mMessages[2].second, function + "Failed to locate path to stock database, ");
}

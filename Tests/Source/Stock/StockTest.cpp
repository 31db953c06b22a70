#include "Common/Reports.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Stock/UStockBalance.h"
#include "TestStock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

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

TEST(UStockBalance, IsPlainArithmeticForAnyNames)
{
    // Names that share keys ("a#b" of "c", "b#c" of "a"), that no article has, and numbers in several libraries.
    const std::string names[] = {"a", "a#b", "b#c", "c", "\xC3\xA4", "\xE6\x97\xA5", std::string(32, 'x'), "X"};
    std::mt19937 random(12);
    for (int round = 0; round < 300; ++round) {
        std::map<std::pair<std::string, std::string>, int> lists[2];
        UStockBalance::tAmounts amounts[2];
        for (int side = 0; side < 2; ++side) {
            for (auto n = random() % 20; n > 0; --n) {
                const int count = static_cast<int>(random() >> 1 >> random() % 32);
                lists[side][{side == 0 && n == 1 ? "" : names[random() % 8], names[random() % 8]}] = count;
            }
            for (const auto& [key, count] : lists[side]) {
                amounts[side].push_back({key.first, key.second, count});
            }
        }
        std::vector<int> results[2];
        UStockBalance::Compare(amounts[0], amounts[1], results[0], results[1]);
        for (int side = 0; side < 2; ++side) {
            for (size_t i = 0; i < amounts[side].size(); ++i) {
                const auto& [library, number, count] = amounts[side][i];
                const auto other = lists[1 - side].find({library, number});
                EXPECT_EQ(results[side][i], other == lists[1 - side].end() ? count : std::max(count - other->second, 0))
                    << library << "/" << number;
            }
        }
    }
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

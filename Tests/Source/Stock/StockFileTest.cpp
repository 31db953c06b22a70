#include "Common/Reports.h"
#include "TestStock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/resource.h>

using Platform::eReportLevel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {
using tTexts = std::vector<std::string>;

const char kLoad[] = "bool CStock::LoadFromFile(const char *): ";
const char kCreate[] = "CCountedCIG *CStock::CreateCountedCIG(const char *, const char *, int): ";
const char kInvalidNode[] = "Invalid stock file format. (Invalid node type under 'Velmora_Stock' node)";
const char kNoNumber[] = "Invalid stock file format. (Stock item is missing 'ProductNr' node)";
const char kNoLibrary[] = "Invalid stock file format. (Stock item is missing 'Railset' node)";

class CStockFile : public testing::Test {
protected:
    CStockFile() { RegisterLibraries(); }

    bool Load(const std::string& bytes) { return mStock.LoadFromFile(WriteTestFile("Stock.xml", bytes).c_str()); }

    CStock mStock;
};
} // namespace

TEST_F(CStockFile, EntriesAreReadUpToTheFirstThatIsNone)
{
    const std::string a1 = Item("A1", "Alpha", "1");
    const std::string a2 = Item("A2", "Alpha", "5");
    const std::string beta = "<StockItem><Extra><Railset>Beta</Railset></Extra><Railset>Alpha</Railset>";
    const std::string outside =
        "Skipping element 'A\xE6\x97\xA5' of library 'Alpha', whose names have characters that no article has";
    const std::string noArticle = "Failed to locate stock item '";
    const struct {
        std::string items;
        const char* outcome;
        std::string message; ///< without the function
    } cases[] = {
        {a2 + a1 + a2, "true Alpha/A1/1 Alpha/A2/10", ""},
        {a1 + Item("A1", "Alpha", "2147483647"), "true Alpha/A1/2147483647", ""},
        {Item("A1", "Alpha", "") + Item("A2", "Alpha", "x"), "true Alpha/A1/0 Alpha/A2/0", ""},
        {Item("A1", "Alpha", "-99999999999"), "true Alpha/A1/-2147483648", ""},
        {beta + "<!-- c --><ProductNr>A1</ProductNr></StockItem>", "true Alpha/A1/0", ""},
        {"\n<!-- c -->\n" + a2 + "\n\t<!-- d -->", "true Alpha/A2/5", ""},
        {" <!-- c --> ", "false", ""},
        {a2 + "StockItem", "false Alpha/A2/5", kInvalidNode},
        {a2 + "<Stockitem/>" + a1, "false Alpha/A2/5", kInvalidNode},
        {a2 + "<StockItem/>" + a1, "false Alpha/A2/5", kNoNumber},
        {Item("", "Alpha", "1"), "false", kNoNumber},
        {Item("<b>A1</b>", "Alpha", "1"), "false", kNoNumber},
        {"<StockItem><ProductNr>A1</ProductNr></StockItem>", "false", kNoLibrary},
        {Item("A1", "", "1"), "false", kNoLibrary},
        {Item("A1", "alpha &amp;", "1") + a2, "true Alpha/A2/5", "Skipping element due to unknown library \"alpha &\""},
        {Item("B1", "Broken", "1") + a2, "true Alpha/A2/5",
         "Failed to load library 'Broken' for stock item with product number B1 (3)."},
        {Item("A9&lt;", "Alpha", "1") + a2, "true Alpha/A2/5", noArticle + "A9<' in library Alpha."},
        {Item("A\xE6\x97\xA5", "Alpha", "1") + a2, "true Alpha/A2/5", outside},
        {Item("\xC3\x8A\xC3\xB3\xE2\x80\xA2", "Alpha", "1") + a2, "true Alpha/A2/5",
         noArticle + "\xE6\x97\xA5' in library Alpha."},
        {Item(std::string(500, 'x'), "Alpha", "1") + a2, "true Alpha/A2/5",
         noArticle + std::string(500, 'x') + "' in library Alpha."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.items);
        const CReports reports;
        std::string outcome = Load(StockFile(c.items)) ? "true" : "false";
        for (const std::string& entry : Entries(mStock)) {
            outcome += " " + entry;
        }
        EXPECT_EQ(outcome, c.outcome);
        const bool isInfo = c.message.starts_with("Skipping element due");
        const std::string function = c.message.starts_with("Failed") ? kCreate : kLoad;
        const auto message = Pair(isInfo ? eReportLevel::kInfo : eReportLevel::kWarning, function + c.message);
        if (c.message.empty()) {
            EXPECT_THAT(reports.mMessages, IsEmpty());
        } else {
            EXPECT_THAT(reports.mMessages, ElementsAre(message));
        }
    }
    const CReports reports;
    EXPECT_EQ(mStock.CreateCountedCIG("Nobody", "N1", 1), nullptr);
    EXPECT_THAT(reports.mMessages,
                ElementsAre(Pair(eReportLevel::kWarning,
                                 kCreate + std::string("Failed to load library 'Nobody' for stock item with product "
                                                       "number N1 (-1)."))));
}

TEST_F(CStockFile, WhatIsNoStockFileEmptiesTheStock)
{
    const std::string item = Item("A1", "Alpha", "1");
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"no XML", "Stock"},
        {"another root", "<Velmora_stock>" + item + "</Velmora_stock>"},
        {"the root's name as a text", "<Stock>Velmora_Stock</Stock>"},
        {"not UTF-8", StockFile(item + Item("\xFF", "Alpha", "1"))},
        {"second document", StockFile(item) + StockFile(item)},
        {"an entity for the root", "<!DOCTYPE x [<!ENTITY r \"<Velmora_Stock>\">]>&r;" + item},
    };
    for (const auto& [what, bytes] : cases) {
        SCOPED_TRACE(what);
        ASSERT_TRUE(Load(StockFile(item)));
        EXPECT_FALSE(Load(bytes));
        EXPECT_EQ(mStock.GetSumOfElementTypes(), 0);
    }
    for (const char* path : {"", "/no such folder/Stock.xml", "/", static_cast<const char*>(nullptr)}) {
        ASSERT_TRUE(Load(StockFile(item)));
        EXPECT_FALSE(mStock.LoadFromFile(path));
        EXPECT_EQ(mStock.GetSumOfElementTypes(), 0);
    }
}

TEST_F(CStockFile, SavedFileByteForByteInKeyOrder)
{
    ASSERT_TRUE(Load(StockFile(Item("A2", "Alpha", "-3") + Item("X1", "Alpha!", "7") + Item("A1", "Alpha", "0") +
                               Item("&#xC4;&#xE4;&#xF8FF;&#x20AC;", "S\xC3\xB6hne &amp; &lt;Co>", "1"))));
    const std::string path = WriteTestFile("Saved.xml", "old");
    ASSERT_TRUE(mStock.SaveToFile(path.c_str()));
    const auto item = [](const std::string& number, const std::string& library, const std::string& count) {
        return "\t<StockItem>\n\t\t<ProductNr>" + number + "</ProductNr>\n\t\t<Railset>" + library +
               "</Railset>\n\t\t<Count>" + count + "</Count>\n\t</StockItem>\n";
    };
    // "Alpha!#" comes before "Alpha#".
    EXPECT_EQ(ReadFile(path),
              "<?xml version=\"1.0\"?>\n<Velmora_Stock>\n" + item("X1", "Alpha!", "7") + item("A1", "Alpha", "0") +
                  item("A2", "Alpha", "-3") +
                  item("\xC3\x84\xC3\xA4\xEF\xA3\xBF\xE2\x82\xAC", "S\xC3\xB6hne &amp; &lt;Co&gt;", "1") +
                  "</Velmora_Stock>\n");
}

TEST_F(CStockFile, EveryNameComesBack)
{
    CStock original;
    int count = 1;
    for (const std::string& name : tTexts{"Alpha", "Alpha!", "S\x9Ahne & <Co>", std::string(127, '\'')}) {
        const std::unique_ptr<CRailSet> library(CRailsetFolder::Instance()->GetRailset(name));
        ASSERT_NE(library, nullptr) << name;
        ASSERT_EQ(library->Load(), 0);
        for (CCompositeGeometry* article : library->GetGeometries()) {
            ASSERT_EQ(original.AddElement(new CCountedCIG(article, count++)), 1) << article->GetName();
        }
    }
    ASSERT_EQ(original.GetSumOfElementTypes(), 16);
    const std::string path = TestPath("Saved.xml");
    const CReports reports;
    for (int round = 0; round < 3; ++round) { // an entity escaped twice would grow with each
        ASSERT_TRUE((round == 0 ? original : mStock).SaveToFile(path.c_str()));
        EXPECT_TRUE(mStock.LoadFromFile(path.c_str()));
        EXPECT_EQ(Entries(mStock), Entries(original));
    }
    EXPECT_THAT(reports.mMessages, IsEmpty());
}

TEST_F(CStockFile, WhatIsSavedIsReadAndWhatCouldNotBeReadIsNotSaved)
{
    constexpr int kArticles = 100000;
    CStock large;
    CCompositeGeometry article;
    article.SetRailSetName(std::string(9, '=').c_str());
    const auto grow = [&](int first, int end) {
        for (int i = first; i < end; ++i) {
            article.SetName((std::to_string(i) + std::string(9, '=')).c_str());
            ASSERT_EQ(large.AddElement(new CCountedCIG(&article, i)), 1);
        }
    };
    grow(0, kArticles);
    article.SetName("");
    ASSERT_EQ(large.AddElement(new CCountedCIG(&article, 1)), 1);
    const std::string path = TestPath("Large.xml");
    const CReports reports;
    ASSERT_TRUE(large.SaveToFile(path.c_str()));
    EXPECT_THAT(reports.mMessages,
                ElementsAre(Pair(eReportLevel::kWarning,
                                 "bool CStock::SaveToFile(const char *): Leaving out element '' of library '" +
                                     std::string(9, '=') + "', which lacks a name")));
    int64_t sum = 0;
    const auto add = [&sum](const std::string&, const std::string&, int count) { sum += count; };
    EXPECT_EQ(CStock::ForEachEntry(path.c_str(), add), CStock::eFileState::kWhole);
    EXPECT_EQ(sum, int64_t{kArticles} * (kArticles - 1) / 2);

    const auto size = std::filesystem::file_size(path);
    grow(kArticles, kArticles + 15000);
    EXPECT_FALSE(large.SaveToFile(path.c_str())) << "larger than what is read";
    EXPECT_TRUE(reports.mMessages.back().second.starts_with("static bool UXMLFile::Format")) << "and that is said";
    EXPECT_EQ(std::filesystem::file_size(path), size) << "the old file stays";
}

TEST_F(CStockFile, CutOrChangedFilesNeitherCrashNorMakeThingsUp)
{
    ASSERT_TRUE(Load(StockFile(Item("A1", "Alpha", "1") + Item("&#x22;&amp;", "S\xC3\xB6hne &amp; &lt;Co>", "2") +
                               Item("A2", "Alpha", "3"))));
    const std::string path = TestPath("Saved.xml");
    ASSERT_TRUE(mStock.SaveToFile(path.c_str()));
    const std::string whole = ReadFile(path);
    for (size_t size = 0; size + 1 < whole.size(); ++size) { // the last byte is a line feed
        EXPECT_FALSE(Load(whole.substr(0, size))) << size;
        EXPECT_EQ(mStock.GetSumOfElementTypes(), 0) << size;
    }
    std::mt19937 random(20);
    for (int i = 0; i < 3000; ++i) {
        std::string changed = whole;
        for (int change = 0; change < 3; ++change) {
            changed[random() % changed.size()] =
                random() % 3 == 0 ? static_cast<char>(random()) : "<>&;/!'"[random() % 7];
        }
        Load(changed);
        for (const std::string& entry : Entries(mStock)) {
            EXPECT_TRUE(entry.starts_with("Alpha") || entry.starts_with("S\x9Ahne & <Co>")) << entry;
        }
    }
}

TEST_F(CStockFile, AFileThatCannotBeWrittenKeepsTheOldOne)
{
    CStock stock;
    for (int i = 0; i < 300; ++i) {
        CCompositeGeometry element;
        element.SetName(std::to_string(i).c_str());
        ASSERT_EQ(stock.AddElement(new CCountedCIG(&element, 1)), 1);
    }
    const std::string path = WriteTestFile("kept/Stock.xml", "old");
    EXPECT_FALSE(stock.SaveToFile(TestPath("kept").c_str())) << "a folder";
    EXPECT_FALSE(stock.SaveToFile(TestPath("no such folder/Stock.xml").c_str()));
    EXPECT_FALSE(stock.SaveToFile("/dev/full"));
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {4096, limit.rlim_max}; // the file gets larger
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool saved = stock.SaveToFile(path.c_str());
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    signal(SIGXFSZ, handler);
    EXPECT_FALSE(saved);
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(TestPath("kept")), {}), 1) << "nothing is left behind";
    EXPECT_TRUE(stock.SaveToFile(path.c_str())) << "without the limit";
    EXPECT_GT(ReadFile(path).size(), 4096u);
}

#include "Bounds.h"
#include "CXMLDocument/UXMLFile.h"
#include "Common/Reports.h"
#include "TestStock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Platform::eReportLevel;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {
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
        {Item("A2", "Alpha", "x"), "true Alpha/A2/0", ""},
        {beta + "<!-- c --><ProductNr>A1</ProductNr></StockItem>", "true Alpha/A1/0", ""},
        {a2 + "StockItem", "false Alpha/A2/5", kInvalidNode},
        {Item("<b>A1</b>", "Alpha", "1"), "false", kNoNumber},
        {"<StockItem><ProductNr>A1</ProductNr></StockItem>", "false", kNoLibrary},
        {Item("A1", "alpha &amp;", "1") + a2, "true Alpha/A2/5", "Skipping element due to unknown library \"alpha &\""},
        {Item("B1", "Broken", "1") + a2, "true Alpha/A2/5",
         "Failed to load library 'Broken' for stock item with product number B1 (3)."},
        {Item("A9&lt;", "Alpha", "1") + a2, "true Alpha/A2/5", noArticle + "A9<' in library Alpha."},
        {Item("A\xE6\x97\xA5", "Alpha", "1") + a2, "true Alpha/A2/5", outside},
        {Item("\xC3\x8A\xC3\xB3\xE2\x80\xA2", "Alpha", "1") + a2, "true Alpha/A2/5",
         noArticle + "\xE6\x97\xA5' in library Alpha."},
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
        const auto message = std::pair(isInfo ? eReportLevel::kInfo : eReportLevel::kWarning, function + c.message);
        ASSERT_EQ(reports.mMessages.size(), c.message.empty() ? 0u : 1u);
        EXPECT_TRUE(c.message.empty() || reports.mMessages[0] == message);
    }
}

TEST_F(CStockFile, WhatIsNoStockFileEmptiesTheStock)
{
    const std::string item = Item("A1", "Alpha", "1");
    for (const std::string& bytes :
         std::vector<std::string>{"", "Stock", "<Velmora_stock>" + item + "</Velmora_stock>",
                                  "<Stock>Velmora_Stock</Stock>", StockFile(item + Item("\xFF", "Alpha", "1")),
                                  "<!DOCTYPE x [<!ENTITY r \"<Velmora_Stock>\">]>&r;" + item}) {
        ASSERT_TRUE(Load(StockFile(item)));
        EXPECT_FALSE(Load(bytes)) << bytes;
        EXPECT_EQ(mStock.GetSumOfElementTypes(), 0) << bytes;
    }
    ASSERT_TRUE(Load(StockFile(item)));
    EXPECT_FALSE(mStock.LoadFromFile(nullptr));
    EXPECT_EQ(mStock.GetSumOfElementTypes(), 0);
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
    for (const std::string& name :
         std::vector<std::string>{"Alpha", "Alpha!", "S\x9Ahne & <Co>", std::string(127, '\'')}) {
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
    EXPECT_FALSE(original.SaveToFile(TestPath("").c_str())) << "a folder";
}

TEST_F(CStockFile, AHundredThousandArticlesFitAndOneWithoutNumberIsLeftOut)
{
    constexpr size_t kArticles = 100;
    CCompositeGeometry article;
    article.SetRailSetName(std::string(9, '=').c_str());
    for (size_t i = 0; i < kArticles; ++i) {
        article.SetName((std::to_string(i) + std::string(11, '=')).c_str());
        ASSERT_EQ(mStock.AddElement(new CCountedCIG(&article, 1000000000)), 1);
    }
    article.SetName("");
    ASSERT_EQ(mStock.AddElement(new CCountedCIG(&article, 1)), 1);
    const std::string path = TestPath("Large.xml");
    const CReports reports;
    ASSERT_TRUE(mStock.SaveToFile(path.c_str()));
    EXPECT_THAT(reports.mMessages,
                ElementsAre(Pair(eReportLevel::kWarning,
                                 "bool CStock::SaveToFile(const char *): Leaving out element '' of library '" +
                                     std::string(9, '=') + "', which lacks a name")));
    const std::string bytes = ReadFile(path);
    const auto marks = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '<'));
    EXPECT_LE(marks * (100000 / kArticles), Bounds::kMostXMLMarks);
    EXPECT_LE(bytes.size() * (100000 / kArticles), Bounds::kMostXMLBytes);
}

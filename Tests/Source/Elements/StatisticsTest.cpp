#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/CDisplayOptionsManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutStatistics.h"
#include "Source/Elements/Elements.h"
#include "Source/Geometry/Shapes.h"
#include "Stock/UPriceManager.h"

#include <algorithm>
#include <map>

using testing::ElementsAre;

namespace {
using tList = std::vector<CCountedCIG*>;
using tCounts = std::vector<std::pair<std::string, int>>;

/// Owns the entries of a list that an operation fills.
class COwnedList {
public:
    ~COwnedList() { UCountedElementVectorOperations::EraseAll(mList); }
    void Add(CCompositeGeometry* element, int count) { mList.push_back(new CCountedCIG(element, count)); }
    tList mList;
};

tCounts Names(const tList& list, const char* (CCompositeGeometry::*name)() const = &CCompositeGeometry::GetName)
{
    tCounts counts;
    for (const CCountedCIG* entry : list) {
        counts.emplace_back((entry->*name)(), entry->GetCount());
    }
    return counts;
}

std::string Summary(const std::vector<tElement>& elements)
{
    return UElementStatistics::GetContentSummaryAsString(Pointers(elements));
}

/// Elements of a few names and libraries, of every kind.
std::vector<tElement> RandomElements(CRandom& random, int count)
{
    static constexpr const char* kNames[] = {"A", "B7", "C22", "A1000", "C23", "-", "B8", "LongestOfAll"};
    static constexpr const char* kLibraries[] = {"-", "Alpha", "Beta", "Alpha 2"};
    std::vector<tElement> elements;
    for (int i = 0; i < count; ++i) {
        elements.push_back(
            NewElement(kAllTypes[random.Below(6)], kNames[random.Below(8)], kLibraries[random.Below(4)]));
        elements.back()->GetLibraryItemAttributes().price = random.Below(1000);
        elements.back()->GetLibraryItemAttributes().modelScale = 11 + random.Below(12);
    }
    return elements;
}
} // namespace

TEST(Statistics, ContentSummary)
{
    EXPECT_EQ(Summary({}), "");
    std::vector<tElement> elements;
    elements.push_back(NewElement(kOvalType));
    elements.push_back(NewElement(kFlexTrackType, "flex"));
    EXPECT_EQ(Summary(elements), "") << "graphics and tracks of no library";
    elements.push_back(NewElement(kStraightType, "A100", "Alpha"));
    elements.push_back(NewText("Station"));
    elements.push_back(NewElement(kCurveType, "A200", "Alpha"));
    elements.push_back(NewElement(kStraightType, "B7", "Beta"));
    elements.push_back(NewText("Yard"));
    elements.push_back(NewElement(kOvalType, "A300", "Alpha"));
    EXPECT_EQ(Summary(elements), "Alpha A100, Beta B7, Station, Yard, ");
    elements.push_back(NewText(""));
    elements.push_back(NewText("two\nlines \x8A"));
    elements.push_back(NewElement(kTextType, "T", "Signs")); // a text of a library is both
    EXPECT_EQ(Summary(elements), "Alpha A100, Beta B7, Signs T, Station, Yard, , two\nlines \x8A, Yard, ");
}

TEST(Statistics, UsageByLibraryAndByArticle)
{
    CRandom random(41);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        const std::vector<tElement> elements = RandomElements(random, random.Below(60));
        tCounts libraries;
        std::map<std::string, int> articles;
        std::map<std::string, std::string> representatives;
        std::map<int, int> scales;
        tWSStatRec types;
        for (const tElement& element : elements) {
            const int type = element->GetBIGAtIndex(0)->GetType();
            const bool track = type == kStraightType || type == kCurveType || type == kFlexTrackType;
            scales[element->GetModelScale()] += track ? 1 : 0;
            if (std::string(element->GetRailSetName()) != "-") {
                const auto found = std::find_if(libraries.begin(), libraries.end(), [&](const auto& library) {
                    return library.first == element->GetRailSetName();
                });
                if (found == libraries.end()) {
                    libraries.emplace_back(element->GetRailSetName(), 1);
                    representatives[element->GetRailSetName()] = element->GetName();
                } else {
                    ++found->second;
                }
                ++articles[element->GetName()];
                ++(track ? types.tracks : types.accessories);
            } else if (type == kFlexTrackType) {
                ++articles[element->GetName()];
                ++types.flexTracks;
            } else {
                ++(type == kTextType ? types.texts : types.graphics);
            }
        }
        COwnedList usage;
        UElementStatistics::GetRailsetUsageStatistics(Pointers(elements), usage.mList);
        EXPECT_EQ(Names(usage.mList, &CCompositeGeometry::GetRailSetName), libraries) << "by first appearance";
        for (const CCountedCIG* entry : usage.mList) {
            EXPECT_EQ(entry->GetName(), representatives[entry->GetRailSetName()]);
        }
        COwnedList parts;
        UElementStatistics::GetLibraryElementUsageStatistics(Pointers(elements), parts.mList);
        tCounts byName = Names(parts.mList);
        for (size_t i = 1; i < byName.size(); ++i) {
            EXPECT_GE(byName[i - 1].first.size(), byName[i].first.size()) << "the longest first";
        }
        std::sort(byName.begin(), byName.end());
        EXPECT_EQ(byName, tCounts(articles.begin(), articles.end()));

        tWSStatRec record;
        record.texts = 99;
        UElementStatistics::GetItemTypeStatistics(Pointers(elements), record);
        EXPECT_THAT((std::vector{record.tracks, record.accessories, record.flexTracks, record.graphics, record.texts}),
                    ElementsAre(types.tracks, types.accessories, types.flexTracks, types.graphics, types.texts));
        std::map<int, int> histogram = {{99, 7}};
        UElementStatistics::GetModelScaleTrackStatistics(Pointers(elements), histogram);
        std::map<int, int> once = histogram;
        UElementStatistics::GetModelScaleTrackStatistics(Pointers(elements), histogram);
        EXPECT_EQ(histogram[99], 7);
        for (const auto& [scale, count] : scales) {
            EXPECT_EQ(once[scale], count);
            EXPECT_EQ(histogram[scale], 2 * count);
        }
    }
}

TEST(Statistics, RemainingStock)
{
    COwnedList used;
    COwnedList stock;
    const auto add = [](COwnedList& list, const char* name, int count) {
        list.Add(NewElement(kStraightType, name, "Alpha").get(), count);
    };
    add(used, "A", 5);
    add(used, "B", 3);
    add(used, "B", 99); // of two alike the first counts
    add(used, "D", 1);
    add(stock, "C", 4);
    add(stock, "A", 3);
    add(stock, "B", 5);
    add(stock, "B", 2);
    const tList before = stock.mList;
    UElementStatistics::GetRemainingStockStatistics(used.mList, stock.mList);
    COwnedList old; // the stock's owner keeps its entries
    old.mList = before;
    EXPECT_EQ(Names(stock.mList), (tCounts{{"C", 4}, {"B", 2}}));
    EXPECT_EQ(Names(before), (tCounts{{"C", 4}, {"A", 3}, {"B", 5}, {"B", 2}}));
    tList broken = {nullptr};
    EXPECT_EXIT(UElementStatistics::GetRemainingStockStatistics(used.mList, broken), testing::ExitedWithCode(0),
                "GetRemainingStockStatistics(.|\n)*Failed to fetch CCountedCIG reference");
}

TEST(Statistics, CountedLists)
{
    CReports reports;
    const tElement a = NewElement(kStraightType, "A", "Alpha");
    const tElement b = NewElement(kStraightType, "B", "Alpha");
    COwnedList list;
    list.Add(a.get(), 2);
    list.Add(b.get(), 0);
    list.Add(b.get(), 3);
    list.Add(a.get(), 0);
    EXPECT_EQ(UCountedElementVectorOperations::FindElement(list.mList, "B"), list.mList[1]);
    EXPECT_EQ(UCountedElementVectorOperations::FindElement(list.mList, "b"), nullptr);
    COwnedList copies;
    UCountedElementVectorOperations::Copy(list.mList, copies.mList);
    UCountedElementVectorOperations::ClearZeroCountElements(list.mList);
    EXPECT_EQ(Names(list.mList), (tCounts{{"A", 2}, {"B", 3}}));
    UCountedElementVectorOperations::Copy(list.mList, copies.mList);
    EXPECT_EQ(copies.mList.size(), 6u) << "appended";
    EXPECT_EQ(UCountedElementVectorOperations::GetSumOfAllElements(copies.mList), 10);
    copies.Add(a.get(), 2147483647);
    EXPECT_EQ(UCountedElementVectorOperations::GetSumOfAllElements(copies.mList), 2147483647);
    UCountedElementVectorOperations::Dump(list.mList, "Used");
    UCountedElementVectorOperations::Dump({}, nullptr);
    std::vector<std::string> texts;
    for (const auto& [level, text] : reports.mMessages) {
        EXPECT_EQ(level, Platform::eReportLevel::kDebugPrint);
        texts.push_back(text);
    }
    EXPECT_THAT(texts, ElementsAre("Used", "Dumping Vector with 2 elements", " 'A', count 2", " 'B', count 3",
                                   "Dumping Vector with 0 elements"));
}

TEST(Statistics, OfALayoutFollowEveryChange)
{
    CRandom random(42);
    CLayout layout;
    const std::vector<tElement> elements = RandomElements(random, 200);
    for (int round = 0; round < 5; ++round) {
        CLayoutStatistics statistics(&layout);
        tCounts expected; // in the order in which names came
        const auto find = [&expected](const char* name) {
            return std::find_if(expected.begin(), expected.end(), [name](auto& entry) { return entry.first == name; });
        };
        for (int step = 0; step < 600; ++step) {
            CCompositeGeometry* element = elements[static_cast<size_t>(random.Below(200))].get();
            const auto found = find(element->GetName());
            if (random.Below(5) < 3) {
                statistics.ElementAdded(element);
                const bool part = element->HasRailSetName() || element->GetBIGAtIndex(0)->GetType() == kFlexTrackType;
                if (part && found == expected.end()) {
                    expected.emplace_back(element->GetName(), 1);
                } else if (part) {
                    ++found->second;
                }
            } else {
                statistics.ElementRemoved(element); // a part or not
                if (found != expected.end() && --found->second == 0) {
                    expected.erase(found);
                }
            }
            tList list;
            statistics.GetLibraryElementUsageStatistics(list, false);
            ASSERT_EQ(Names(list), expected) << "step " << step;
            const int usage = find("B7") == expected.end() ? 0 : find("B7")->second;
            ASSERT_EQ(statistics.GetItemUsage("any library", "B7"), usage);
        }
        tList entries;
        COwnedList copies;
        copies.Add(elements[0].get(), 5); // replaced
        statistics.GetLibraryElementUsageStatistics(copies.mList, true);
        EXPECT_EQ(Names(copies.mList), expected);
        statistics.GetLibraryElementUsageStatistics(entries, false);
        EXPECT_NE(entries[0], copies.mList[0]);
        COwnedList anew;
        statistics.Refresh(Pointers(elements));
        UElementStatistics::GetLibraryElementUsageStatistics(Pointers(elements), anew.mList);
        statistics.GetLibraryElementUsageStatistics(entries, false);
        EXPECT_EQ(Names(entries), Names(anew.mList));
        EXPECT_EQ(statistics.GetItemUsage("", "B7"),
                  UCountedElementVectorOperations::FindElement(entries, "B7")->GetCount());
        statistics.Refresh({});
        EXPECT_EQ(statistics.GetItemUsage("", "B7"), 0);
    }
}

TEST(Statistics, OfALayoutForwardQuestions)
{
    CLayout layout;
    layout.AddItem(NewElement(kStraightType, "S", "Alpha").release());
    layout.AddItem(NewElement(kStraightType, "S", "Alpha").release());
    layout.AddItem(NewText("x").release());
    EXPECT_EQ(layout.GetStatistics()->GetOverallTrackLength(), 401.0);
    tWSStatRec record;
    layout.GetStatistics()->GetElementStatistics(record);
    EXPECT_EQ(record.tracks * 10 + record.texts, 21u);
    COwnedList libraries;
    layout.GetStatistics()->GetRailsetStatistics(libraries.mList);
    EXPECT_EQ(Names(libraries.mList), (tCounts{{"S", 2}}));
    EXPECT_EQ(layout.GetStatistics()->GetItemUsage("", "S"), 2);
    layout.ClearItemVec();
    EXPECT_EQ(layout.GetStatistics()->GetItemUsage("", "S"), 0);
}

TEST(CDisplayOptionsManager, FollowsTheLayouts)
{
    EXPECT_EQ(CDisplayOptionsManager().GetTrackStyle(), 4) << "until the first layout";
    CDisplayOptionsManager::Instance()->SetTrackStyle(7);
    EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 7);
    const CLayout layout;
    EXPECT_EQ(CDisplayOptionsManager::Instance()->GetTrackStyle(), 105);
}

TEST(Prices, AnEntryOfAFlexibleTrackKeepsItsKind)
{
    std::vector<tElement> elements;
    elements.push_back(NewElement(kOvalType, "G"));
    elements.push_back(NewElement(kFlexTrackType, "F"));
    elements.push_back(NewElement(kFlexTrackType, "LF", "Alpha"));
    elements[0]->SetCurrency(1);
    elements[1]->SetCurrency(2);
    elements[2]->SetCurrency(3);
    CLayout layout;
    CLayoutStatistics statistics(&layout);
    statistics.ElementAdded(elements[1].get());
    tList list;
    statistics.GetLibraryElementUsageStatistics(list, false);
    EXPECT_EQ(UPriceManager::GetCurrency(list), 2);
    COwnedList all;
    UElementStatistics::GetLibraryElementUsageStatistics(Pointers(elements), all.mList);
    EXPECT_EQ(UPriceManager::GetCurrency(all.mList), 3) << "of the longest name";
    COwnedList graphics;
    EXPECT_EQ(UPriceManager::GetCurrency({}), 129);
    graphics.Add(elements[0].get(), 1);
    EXPECT_EQ(UPriceManager::GetCurrency(graphics.mList), 129);
    graphics.Add(elements[1].get(), 1);
    EXPECT_EQ(UPriceManager::GetCurrency(graphics.mList), 2);
    UPriceManager::SetCurrency(graphics.mList, 44);
    EXPECT_EQ(graphics.mList[0]->GetCurrency() + graphics.mList[1]->GetCurrency(), 88);
}

TEST(Prices, BackupVoidAndRestore)
{
    COwnedList list;
    const int prices[] = {10, 20, 30};
    const char* const names[] = {"A", "B", "A"};
    for (int i = 0; i < 3; ++i) {
        const tElement element = NewElement(kStraightType, names[i], "Alpha");
        element->SetPrice(prices[i]);
        list.Add(element.get(), 1);
    }
    const auto all = [&list] {
        return std::vector{list.mList[0]->GetPrice(), list.mList[1]->GetPrice(), list.mList[2]->GetPrice()};
    };
    UPriceManager::tPrices backup = {{"Z", 1}};
    UPriceManager::BackupPrices(list.mList, backup);
    EXPECT_THAT(backup, ElementsAre(std::pair("A", 30), std::pair("B", 20)));
    UPriceManager::VoidWSElementPrices(list.mList);
    EXPECT_THAT(all(), ElementsAre(0, 0, 0));
    UPriceManager::RestorePrices(list.mList, {});
    EXPECT_THAT(all(), ElementsAre(0, 0, 0));
    backup.erase("B");
    UPriceManager::RestorePrices(list.mList, backup);
    EXPECT_THAT(all(), ElementsAre(30, 0, 30));
}

TEST(Prices, OfOneArticleAgreeInALayout)
{
    CLayout layout;
    const auto add = [&layout](int type, const char* name, const char* library, int price) {
        tElement element = NewElement(type, name, library);
        element->SetPrice(price);
        element->SetCurrency(price);
        layout.AddItem(element.release());
        return layout.GetElements().back();
    };
    const auto* first = add(kStraightType, "A", "Alpha", 10);
    const auto* second = add(kCurveType, "A", "Beta", 20);
    const auto* graphic = add(kOvalType, "A", "-", 30);
    const auto* flex = add(kFlexTrackType, "F", "-", 40);
    const auto* flexAgain = add(kFlexTrackType, "F", "-", 50);
    const auto* other = add(kStraightType, "a", "Alpha", 60);
    EXPECT_EQ(second->GetPrice(), 10) << "what is added follows the first of its name";
    EXPECT_EQ(second->GetCurrency(), 20) << "its currency stays";
    EXPECT_EQ(graphic->GetPrice(), 30);
    EXPECT_EQ(flexAgain->GetPrice(), 40);

    UPriceManager::EnsureWSPriceConsistency(&layout);
    EXPECT_EQ(second->GetCurrency(), 10);
    EXPECT_EQ(flexAgain->GetCurrency(), 40);

    COwnedList edited;
    for (const int price : {77, 78}) { // of two entries alike the first counts
        const tElement entry = NewElement(kStraightType, "A", "Alpha");
        entry->SetPrice(price);
        entry->SetCurrency(130);
        edited.Add(entry.get(), 1);
    }
    UPriceManager::EnsureWSPriceConsistency(&layout, edited.mList);
    EXPECT_EQ(first->GetPrice(), 77);
    EXPECT_EQ(second->GetCurrency(), 130);
    EXPECT_EQ(graphic->GetPrice(), 30);
    EXPECT_EQ(flex->GetPrice(), 40);
    EXPECT_EQ(other->GetPrice(), 60) << "another name";
}

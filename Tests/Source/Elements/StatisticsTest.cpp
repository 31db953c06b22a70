#include "Bounds.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layers/CLayer.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutStatistics.h"
#include "Source/Elements/Elements.h"
#include "Stock/UPriceManager.h"
#include "support/Random.h"

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
    std::vector<tElement> elements;
    elements.push_back(NewElement(kOvalType));
    elements.push_back(NewElement(kFlexTrackType, "flex"));
    EXPECT_EQ(Summary(elements), "") << "graphics and tracks of no library";
    elements.push_back(NewElement(kStraightType, "A100", "Alpha"));
    elements.push_back(NewText("two\nlines \x8A"));
    elements.push_back(NewElement(kCurveType, "A200", "Alpha"));
    elements.push_back(NewElement(kTextType, "T", "Signs")); // a text of a library is both
    elements.push_back(NewText(""));
    elements.push_back(NewElement(kOvalType, "A300", "Alpha"));
    EXPECT_EQ(Summary(elements), "Alpha A100, Signs T, two\nlines \x8A, Yard, , ");
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
        std::map<int, int> twice = {{99, 7}};
        std::vector<unsigned> types(5); // in the order of the record
        for (const tElement& element : elements) {
            const int type = element->GetBIGAtIndex(0)->GetType();
            if (IsTrackType(type)) {
                twice[element->GetModelScale()] += 2;
            }
            if (element->HasRailSetName()) {
                if (representatives.emplace(element->GetRailSetName(), element->GetName()).second) {
                    libraries.emplace_back(element->GetRailSetName(), 0);
                }
                ++std::find_if(libraries.begin(), libraries.end(), [&](const auto& library) {
                      return library.first == element->GetRailSetName();
                  })->second;
                ++types[IsTrackType(type) ? 0 : 1];
            } else {
                ++types[type == kFlexTrackType ? 2 : type == kTextType ? 4 : 3];
            }
            if (element->HasRailSetName() || type == kFlexTrackType) {
                ++articles[element->GetName()];
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
        EXPECT_TRUE(std::is_sorted(byName.begin(), byName.end(), [](const auto& first, const auto& second) {
            return first.first.size() > second.first.size();
        })) << "the longest first";
        std::sort(byName.begin(), byName.end());
        EXPECT_EQ(byName, tCounts(articles.begin(), articles.end()));

        tWSStatRec record;
        record.texts = 99;
        UElementStatistics::GetItemTypeStatistics(Pointers(elements), record);
        EXPECT_THAT(types,
                    ElementsAre(record.tracks, record.accessories, record.flexTracks, record.graphics, record.texts));
        std::map<int, int> histogram = {{99, 7}};
        UElementStatistics::GetModelScaleTrackStatistics(Pointers(elements), histogram);
        UElementStatistics::GetModelScaleTrackStatistics(Pointers(elements), histogram);
        EXPECT_EQ(histogram, twice);
    }
}

TEST(Statistics, RemainingStock)
{
    COwnedList used;
    COwnedList stock;
    const auto add = [](COwnedList& list, const tCounts& counts) {
        for (const auto& [name, count] : counts) {
            list.Add(NewElement(kStraightType, name.c_str(), "Alpha").get(), count);
        }
    };
    add(used, {{"A", 5}, {"B", 3}, {"B", 99}, {"D", 1}}); // of two alike the first counts
    add(stock, {{"C", 4}, {"A", 3}, {"B", 5}, {"B", 2}});
    COwnedList old; // the stock's owner keeps its entries
    old.mList = stock.mList;
    UElementStatistics::GetRemainingStockStatistics(used.mList, stock.mList);
    EXPECT_EQ(Names(stock.mList), (tCounts{{"C", 4}, {"B", 2}}));
}

namespace {
/// What an element answers, but for its unique ID.
auto Answers(CCompositeGeometry& element)
{
    tBytes raw(static_cast<size_t>(element.GetParameterRawSize()));
    element.GetParameterAsRaw(raw.data());
    std::vector<double> rest = {element.GetTrackLength()}; // what raw memory does not hold
    for (CBasicGeometry* component : element.GetComponents()) {
        for (short i = 0; i < 2; ++i) {
            rest.push_back(component->GetJoint(i)->IsActive() ? 1.0 : 0.0);
            EXPECT_EQ(component->GetJoint(i)->GetOwner(), &element);
        }
        if (IsPolygonType(component->GetType())) {
            rest.push_back(static_cast<CPolyBIG*>(component)->GetPoint(1).z);
        }
    }
    return std::tuple(raw, rest, element.IsSelected(), element.GetLayer());
}
} // namespace

TEST(Statistics, EntriesAnswerAsCopiesOfTheirElements)
{
    CLayer layer("Upper level");
    CLayout layout;
    CLayoutStatistics statistics(&layout);
    COwnedList copies;
    std::vector<tElement> elements;
    elements.push_back(NewElement(kStraightType, "overfull", "Alpha"));
    while (elements[0]->GetNumberOfComponents() <= Bounds::kMostComponents) {
        elements[0]->GetComponents().push_back(NewComponent(kCurveType)); // as a document may have it
    }
    for (const int type : kAllTypes) {
        elements.push_back(FullElement(type, &layer));
        elements.back()->GetBIGAtIndex(0)->SetTrackbedWidth(1e300);
        elements.back()->AppendBIG(NewComponent(kStraightType));
    }
    for (const tElement& element : elements) {
        copies.Add(element.get(), 1);
        statistics.ElementAdded(element.get());
    }
    elements.clear();
    const uint32_t nextID = CCompositeGeometry::sNextUniqueID;
    tList entries;
    statistics.GetLibraryElementUsageStatistics(entries, false);
    EXPECT_EQ(CCompositeGeometry::sNextUniqueID, nextID) << "they had theirs all along";
    ASSERT_EQ(entries.size(), copies.mList.size());
    for (size_t i = 0; i < entries.size(); ++i) {
        SCOPED_TRACE(entries[i]->GetName());
        EXPECT_EQ(entries[i]->GetUniqueID(), copies.mList[i]->GetUniqueID() + 1);
        EXPECT_EQ(Answers(*entries[i]), Answers(*copies.mList[i]));
    }
}

TEST(Prices, OfAList)
{
    COwnedList list;
    EXPECT_EQ(UPriceManager::GetCurrency(list.mList), 129);
    list.Add(NewElement(kOvalType, "G").get(), 1);
    UPriceManager::SetCurrency(list.mList, 44);
    EXPECT_EQ(UPriceManager::GetCurrency(list.mList), 129) << "of no part";
    for (const auto& [name, price] : tCounts{{"A", 10}, {"B", 20}, {"A", 30}}) {
        list.Add(NewElement(kFlexTrackType, name.c_str()).get(), 1);
        list.mList.back()->SetPrice(price);
        list.mList.back()->SetCurrency(price);
    }
    EXPECT_EQ(UPriceManager::GetCurrency(list.mList), 10);
    UPriceManager::tPrices backup = {{"Z", 1}};
    UPriceManager::BackupPrices(list.mList, backup);
    EXPECT_THAT(backup, ElementsAre(std::pair("A", 30), std::pair("B", 20), std::pair("G", 0)));
    UPriceManager::VoidWSElementPrices(list.mList);
    backup.erase("B");
    UPriceManager::RestorePrices(list.mList, backup);
    EXPECT_EQ(list.mList[1]->GetPrice(), 30);
    EXPECT_EQ(list.mList[2]->GetPrice(), 0);
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
    EXPECT_EQ(add(kFlexTrackType, "F", "-", 50)->GetPrice(), 40);
    EXPECT_EQ(second->GetPrice(), 10) << "what is added follows the first of its name";
    EXPECT_EQ(second->GetCurrency(), 20) << "its currency stays";

    tList own;
    layout.GetStatistics()->GetLibraryElementUsageStatistics(own, false);
    own.front()->SetPrice(55);
    EXPECT_EQ(add(kStraightType, "A", "Alpha", 90)->GetPrice(), 55);
    UPriceManager::EnsureWSPriceConsistency(&layout);
    EXPECT_EQ(first->GetPrice() + second->GetPrice(), 110) << "as it was edited on the layout's own list";
    EXPECT_EQ(second->GetCurrency(), 10);

    COwnedList edited;
    for (const int price : {77, 78}) { // of two entries alike the first counts
        edited.Add(own.front(), 1);
        edited.mList.back()->SetPrice(price);
        edited.mList.back()->SetCurrency(130);
    }
    UPriceManager::EnsureWSPriceConsistency(&layout, edited.mList);
    EXPECT_EQ(first->GetPrice(), 77);
    EXPECT_EQ(second->GetCurrency(), 130);
    EXPECT_EQ(graphic->GetPrice(), 30);
    EXPECT_EQ(flex->GetPrice(), 40) << "another name";
}

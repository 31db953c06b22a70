#include "Elements/Utilities/UElementStatistics.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCountedCIG.h"
#include "CheckError/CErr.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementInspector.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Stock/CStock.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstring>
#include <set>
#include <string_view>
#include <unordered_map>

namespace {
using tList = UElementStatistics::tList;
using tElements = UElementStatistics::tElements;

/// The first element of a name, and how many have it.
struct tUsage {
    CCompositeGeometry* first;
    int count;
};

/// Counts elements by one of their names. @return an entry for each name, in order of first appearance
template <typename tFilter>
std::vector<tUsage> CountByName(const tElements& elements, const char* (CCompositeGeometry::*nameOf)() const,
                                tFilter counts)
{
    std::vector<tUsage> usages;
    std::unordered_map<std::string_view, size_t> byName; // the names lie in the elements
    size_t last = 0;
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (!counts(element)) {
            continue;
        }
        const char* name = (element->*nameOf)();
        // Elements of one kind usually follow each other.
        if (usages.empty() || std::strcmp((usages[last].first->*nameOf)(), name) != 0) {
            const auto [found, added] = byName.try_emplace(name, usages.size());
            last = found->second;
            if (added) {
                usages.push_back({element, 0});
            }
        }
        ++usages[last].count;
    }
    return usages;
}

std::vector<tUsage> CountByLibrary(const tElements& elements)
{
    return CountByName(elements, &CCompositeGeometry::GetRailSetName,
                       [](const CCompositeGeometry* element) { return !UElementInspector::IsGenericElement(element); });
}

void MakeEntries(const std::vector<tUsage>& usages, tList& list)
{
    list.clear();
    for (const tUsage& usage : usages) {
        list.push_back(new CCountedCIG(usage.first, usage.count));
    }
}
} // namespace

bool CCountedCIGProdNrLessThan::operator()(const CCountedCIG* a, const CCountedCIG* b) const
{
    return std::strcmp(a->GetName(), b->GetName()) < 0;
}

bool CCompCountedCIG_CompProdNr::operator()(const CCountedCIG* a, const CCountedCIG* b) const
{
    return std::strlen(a->GetName()) > std::strlen(b->GetName());
}

std::string UElementStatistics::GetContentSummaryAsString(const tElements& elements)
{
    static constexpr char kSeparator[] = ", ";
    std::string summary;
    for (const tUsage& library : CountByLibrary(elements)) {
        summary.append(library.first->GetRailSetName()).append(" ").append(library.first->GetName()).append(kSeparator);
    }
    tElements texts;
    UElementVectorOperations::GetAllTextElements(elements, texts);
    BOOST_FOREACH(const CCompositeGeometry* element, texts) {
        const CBasicGeometry* first = element->GetBIGAtIndex(0);
        summary.append(static_cast<const CTextBIG*>(first)->GetTextReference()).append(kSeparator);
    }
    return summary;
}

void UElementStatistics::GetRailsetUsageStatistics(const tElements& elements, tList& list)
{
    MakeEntries(CountByLibrary(elements), list);
}

void UElementStatistics::GetLibraryElementUsageStatistics(const tElements& elements, tList& list)
{
    MakeEntries(CountByName(elements, &CCompositeGeometry::GetName, &ElementIsDisplayedInPartlist), list);
    std::stable_sort(list.begin(), list.end(), CCompCountedCIG_CompProdNr());
}

bool UElementStatistics::ElementIsDisplayedInPartlist(const CCompositeGeometry* element)
{
    return !UElementInspector::IsGenericElement(element) || UElementInspector::IsFlexElement(element);
}

void UElementStatistics::GetItemTypeStatistics(const tElements& elements, tWSStatRec& record)
{
    record = tWSStatRec();
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        if (!UElementInspector::IsGenericElement(element)) {
            ++(UElementInspector::IsTrackElement(element) ? record.tracks : record.accessories);
        } else if (UElementInspector::IsFlexElement(element)) {
            ++record.flexTracks;
        } else if (UElementInspector::IsTextElement(element)) {
            ++record.texts;
        } else {
            ++record.graphics;
        }
    }
}

void UElementStatistics::GetModelScaleTrackStatistics(const tElements& elements, tScaleHistogram& histogram)
{
    BOOST_FOREACH(const CCompositeGeometry* element, elements) {
        if (UElementInspector::IsTrackElement(element)) {
            ++histogram[element->GetModelScale()];
        }
    }
}

void UElementStatistics::GetRequiredElementStatistics(tList& list, const CStock* stock)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        if (const CCountedCIG* const owned = stock->FindElement(entry->GetRailSetName(), entry->GetName())) {
            entry->DecCount(owned->GetCount());
        }
    }
    UCountedElementVectorOperations::ClearZeroCountElements(list);
}

void UElementStatistics::GetRemainingStockStatistics(const tList& used, tList& stock)
{
    std::set<CCountedCIG*, CCountedCIGProdNrLessThan> usedByName(used.begin(), used.end());
    tList remaining;
    BOOST_FOREACH(CCountedCIG* entry, stock) {
        CErr::CheckNull(entry,
                        "static void UElementStatistics::GetRemainingStockStatistics(vector<CCountedCIG *> &, "
                        "vector<CCountedCIG *> &)",
                        "Failed to fetch CCountedCIG reference");
        CCountedCIG* rest = new CCountedCIG(entry);
        remaining.push_back(rest);
        const auto found = usedByName.find(entry);
        if (found != usedByName.end()) {
            rest->DecCount((*found)->GetCount());
        }
    }
    UCountedElementVectorOperations::ClearZeroCountElements(remaining);
    remaining.swap(stock);
}

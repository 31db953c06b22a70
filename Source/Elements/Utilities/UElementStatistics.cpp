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
using tKeyOf = const char* (CCompositeGeometry::*)() const;

/// Counts elements by one of their names; an index beside the list finds the entry.
class CUsageCounter {
public:
    CUsageCounter(tList& list, tKeyOf keyOf) : mList(list), mKeyOf(keyOf) { mList.clear(); }

    void Count(CCompositeGeometry* element)
    {
        const char* key = (element->*mKeyOf)();
        // Elements of one kind usually follow each other.
        if (mLast == nullptr || std::strcmp((mLast->*mKeyOf)(), key) != 0) {
            const auto found = mByKey.find(key);
            if (found == mByKey.end()) {
                mLast = CCountedCIG::ForStatistics(element).release();
                mList.push_back(mLast);
                mByKey.emplace((mLast->*mKeyOf)(), mLast);
                return;
            }
            mLast = found->second;
        }
        mLast->IncCount(1);
    }

private:
    tList& mList;
    tKeyOf mKeyOf;
    std::unordered_map<std::string_view, CCountedCIG*> mByKey; ///< keys lie in the entries
    CCountedCIG* mLast = nullptr;
};
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
    tList libraries;
    GetRailsetUsageStatistics(elements, libraries);
    BOOST_FOREACH(const CCountedCIG* library, libraries) {
        summary.append(library->GetRailSetName()).append(" ").append(library->GetName()).append(kSeparator);
    }
    UCountedElementVectorOperations::EraseAll(libraries);
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
    CUsageCounter counter(list, &CCompositeGeometry::GetRailSetName);
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (!UElementInspector::IsGenericElement(element)) {
            counter.Count(element);
        }
    }
}

void UElementStatistics::GetLibraryElementUsageStatistics(const tElements& elements, tList& list)
{
    CUsageCounter counter(list, &CCompositeGeometry::GetName);
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        if (ElementIsDisplayedInPartlist(element)) {
            counter.Count(element);
        }
    }
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

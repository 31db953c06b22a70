#include "Layouts/CLayoutStatistics.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layouts/CLayout.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstring>

CLayoutStatistics::CLayoutStatistics(CLayout* layout) : mLayout(layout) {}

CLayoutStatistics::~CLayoutStatistics() = default;

const char* CLayoutStatistics::tUsage::GetName() const
{
    return entry ? entry->GetName() : CElementImages::NameOf(image);
}

int CLayoutStatistics::tUsage::GetCount() const
{
    return entry ? entry->GetCount() : count;
}

void CLayoutStatistics::EraseAll()
{
    mLastFound = CNameIndex::kNowhere;
    mByName.Clear();
    mUsages.clear();
    mImages.Clear();
}

void CLayoutStatistics::IndexAnew()
{
    mLastFound = CNameIndex::kNowhere;
    mByName.Clear();
    for (size_t i = 0; i < mUsages.size(); ++i) {
        mByName.Add(mUsages[i].GetName(), i);
    }
}

void CLayoutStatistics::Refresh(const std::vector<CCompositeGeometry*>& elements)
{
    EraseAll();
    BOOST_FOREACH(CCompositeGeometry* element, elements) {
        Count(element);
    }
    std::stable_sort(mUsages.begin(), mUsages.end(), [](const tUsage& a, const tUsage& b) {
        return std::strlen(a.GetName()) > std::strlen(b.GetName());
    });
    IndexAnew();
    StatisticsChanged();
}

CLayoutStatistics::tUsage* CLayoutStatistics::Find(const char* name) const
{
    if (mLastFound == CNameIndex::kNowhere || std::strcmp(mUsages[mLastFound].GetName(), name) != 0) {
        mLastFound = mByName.Find(name, [this](size_t place) { return mUsages[place].GetName(); });
    }
    return mLastFound == CNameIndex::kNowhere ? nullptr : &mUsages[mLastFound];
}

CCountedCIG* CLayoutStatistics::GetEntry(tUsage& usage) const
{
    if (!usage.entry) {
        usage.entry = mImages.Restore(usage.image, usage.count);
        usage.image.reset();
    }
    return usage.entry.get();
}

CCountedCIG* CLayoutStatistics::FindUsage(const char* name) const
{
    tUsage* const found = Find(name);
    return found != nullptr ? GetEntry(*found) : nullptr;
}

void CLayoutStatistics::MatchPrice(CCompositeGeometry* element) const
{
    if (!UElementStatistics::ElementIsDisplayedInPartlist(element)) {
        return;
    }
    if (const tUsage* const found = Find(element->GetName())) {
        element->SetPrice(found->entry ? found->entry->GetPrice() : found->price);
    }
}

void CLayoutStatistics::Count(CCompositeGeometry* element)
{
    if (!UElementStatistics::ElementIsDisplayedInPartlist(element)) {
        return;
    }
    if (tUsage* const found = Find(element->GetName())) {
        if (found->entry) {
            found->entry->IncCount(1);
        } else {
            ++found->count;
        }
    } else {
        mByName.Add(element->GetName(), mUsages.size());
        mUsages.push_back({1, element->GetPrice(), mImages.Keep(*element), nullptr});
    }
}

void CLayoutStatistics::ElementAdded(CCompositeGeometry* element)
{
    Count(element);
    StatisticsChanged();
}

void CLayoutStatistics::CountOneLess(const CCompositeGeometry* element, bool& spent)
{
    if (tUsage* const found = Find(element->GetName())) {
        if (found->entry) {
            found->entry->DecCount(1);
        } else {
            --found->count;
        }
        spent = spent || found->GetCount() == 0;
    }
}

void CLayoutStatistics::RemoveSpent()
{
    std::erase_if(mUsages, [](const tUsage& usage) { return usage.GetCount() == 0; });
    IndexAnew();
}

void CLayoutStatistics::ElementRemoved(CCompositeGeometry* element)
{
    ElementsRemoved({element});
}

void CLayoutStatistics::ElementsRemoved(const std::unordered_set<CCompositeGeometry*>& elements)
{
    bool spent = false;
    for (const CCompositeGeometry* element : elements) {
        CountOneLess(element, spent);
    }
    if (spent) {
        RemoveSpent();
    }
    StatisticsChanged();
}

void CLayoutStatistics::GetElementStatistics(tWSStatRec& record) const
{
    UElementStatistics::GetItemTypeStatistics(mLayout->GetElements(), record);
}

void CLayoutStatistics::GetRailsetStatistics(tList& list) const
{
    UElementStatistics::GetRailsetUsageStatistics(mLayout->GetElements(), list);
}

double CLayoutStatistics::GetOverallTrackLength() const
{
    return UElementVectorOperations::GetElementVectorRailLength(mLayout->GetElements(), 0);
}

void CLayoutStatistics::GetLibraryElementUsageStatistics(tList& out, bool copy) const
{
    tList entries;
    entries.reserve(mUsages.size());
    for (tUsage& usage : mUsages) {
        entries.push_back(GetEntry(usage));
    }
    if (copy) {
        UCountedElementVectorOperations::EraseAll(out);
        UCountedElementVectorOperations::Copy(entries, out);
    } else {
        out.swap(entries);
    }
}

int CLayoutStatistics::GetItemUsage(const char*, const char* name) const
{
    const tUsage* const found = Find(name);
    return found != nullptr ? found->GetCount() : 0;
}

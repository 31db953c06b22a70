#include "Layouts/CLayoutStatistics.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "Layouts/CLayout.h"

#include <boost/foreach.hpp>

#include <cstring>

CLayoutStatistics::CLayoutStatistics(CLayout* layout) : mLayout(layout) {}

CLayoutStatistics::~CLayoutStatistics()
{
    EraseAll();
}

void CLayoutStatistics::EraseAll()
{
    mLastFound = nullptr;
    mByName.clear();
    UCountedElementVectorOperations::EraseAll(mUsage);
}

void CLayoutStatistics::Refresh(const std::vector<CCompositeGeometry*>& elements)
{
    EraseAll();
    UElementStatistics::GetLibraryElementUsageStatistics(elements, mUsage);
    BOOST_FOREACH(CCountedCIG* entry, mUsage) {
        mByName.emplace(entry->GetName(), entry);
    }
    StatisticsChanged();
}

CCountedCIG* CLayoutStatistics::FindUsage(const char* name) const
{
    if (mLastFound == nullptr || std::strcmp(mLastFound->GetName(), name) != 0) {
        const auto found = mByName.find(name);
        if (found == mByName.end()) {
            return nullptr;
        }
        mLastFound = found->second;
    }
    return mLastFound;
}

void CLayoutStatistics::ElementAdded(CCompositeGeometry* element)
{
    if (!UElementStatistics::ElementIsDisplayedInPartlist(element)) {
        return;
    }
    if (CCountedCIG* entry = FindUsage(element->GetName())) {
        entry->IncCount(1);
    } else {
        entry = CCountedCIG::ForStatistics(element).release();
        mUsage.push_back(entry);
        mByName.emplace(entry->GetName(), entry);
    }
    StatisticsChanged();
}

void CLayoutStatistics::CountOneLess(const CCompositeGeometry* element, bool& spent)
{
    if (CCountedCIG* entry = FindUsage(element->GetName())) {
        entry->DecCount(1);
        if (entry->GetCount() == 0) {
            mLastFound = nullptr;
            mByName.erase(entry->GetName());
            spent = true;
        }
    }
}

void CLayoutStatistics::ElementRemoved(CCompositeGeometry* element)
{
    bool spent = false;
    CountOneLess(element, spent);
    if (spent) {
        UCountedElementVectorOperations::ClearZeroCountElements(mUsage);
    }
    StatisticsChanged();
}

void CLayoutStatistics::ElementsRemoved(const std::unordered_set<CCompositeGeometry*>& elements)
{
    bool spent = false;
    for (const CCompositeGeometry* element : elements) {
        CountOneLess(element, spent);
    }
    if (spent) {
        UCountedElementVectorOperations::ClearZeroCountElements(mUsage);
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
    if (copy) {
        UCountedElementVectorOperations::EraseAll(out);
        UCountedElementVectorOperations::Copy(mUsage, out);
    } else {
        out = mUsage;
    }
}

int CLayoutStatistics::GetItemUsage(const char*, const char* name) const
{
    const CCountedCIG* entry = FindUsage(name);
    return entry != nullptr ? entry->GetCount() : 0;
}

#include "Stock/UPriceManager.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/CLayout.h"
#include "Layouts/CLayoutStatistics.h"

#include <boost/foreach.hpp>

#include <string_view>
#include <unordered_map>

void UPriceManager::VoidWSElementPrices(const tList& list)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        entry->SetPrice(0);
    }
}

void UPriceManager::EnsureWSPriceConsistency(CLayout* layout)
{
    tList list;
    layout->GetStatistics()->GetLibraryElementUsageStatistics(list, false);
    EnsureWSPriceConsistency(layout, list);
}

void UPriceManager::EnsureWSPriceConsistency(CLayout* layout, const tList& list)
{
    std::unordered_map<std::string_view, const CCountedCIG*> firstByName;
    BOOST_FOREACH(const CCountedCIG* entry, list) {
        firstByName.try_emplace(entry->GetName(), entry);
    }
    BOOST_FOREACH(CCompositeGeometry* element, layout->GetElements()) {
        if (!UElementStatistics::ElementIsDisplayedInPartlist(element)) {
            continue;
        }
        const auto found = firstByName.find(element->GetName());
        if (found != firstByName.end()) {
            element->SetPrice(found->second->GetPrice());
            element->SetCurrency(found->second->GetCurrency());
        }
    }
}

void UPriceManager::UpdateElementPriceToMatchLayoutPricing(CLayout* layout, CCompositeGeometry* element)
{
    layout->GetStatistics()->MatchPrice(element);
}

int UPriceManager::GetCurrency(const tList& list)
{
    BOOST_FOREACH(const CCountedCIG* entry, list) {
        if (UElementStatistics::ElementIsDisplayedInPartlist(entry)) {
            return entry->GetCurrency();
        }
    }
    return kDefaultCurrency;
}

void UPriceManager::SetCurrency(const tList& list, int currency)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        entry->SetCurrency(currency);
    }
}

void UPriceManager::BackupPrices(const tList& list, tPrices& prices)
{
    prices.clear();
    BOOST_FOREACH(const CCountedCIG* entry, list) {
        prices[entry->GetName()] = entry->GetPrice();
    }
}

void UPriceManager::RestorePrices(const tList& list, const tPrices& prices)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        const auto found = prices.find(entry->GetName());
        if (found != prices.end()) {
            entry->SetPrice(found->second);
        }
    }
}

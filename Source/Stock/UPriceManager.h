// Keeps the prices of a layout's elements in line.
#pragma once

#include <map>
#include <string>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;
class CLayout;

/// Prices and currencies of elements and of the layout's list of parts. Library elements and flexible tracks have
/// prices; other generic elements are passed over. Prices are plain integers; nothing is converted.
class UPriceManager {
public:
    UPriceManager() = delete;

    using tList = std::vector<CCountedCIG*>;
    using tPrices = std::map<std::string, int>;

    /// The currency of a list without priced elements.
    static constexpr int kDefaultCurrency = 129;

    /// Sets every price of the list to 0.
    static void VoidWSElementPrices(const tList& list);
    /// Gives the layout's elements the prices of the list that its statistics keep, edits included.
    static void EnsureWSPriceConsistency(CLayout* layout);
    /// Gives every priced element of the layout price and currency of the first entry of its name; others keep theirs.
    static void EnsureWSPriceConsistency(CLayout* layout, const tList& list);
    /// Gives one element the price that the layout's statistics hold for its name; the currency stays.
    static void UpdateElementPriceToMatchLayoutPricing(CLayout* layout, CCompositeGeometry* element);
    /// Currency of the first priced entry, or kDefaultCurrency.
    static int GetCurrency(const tList& list);
    static void SetCurrency(const tList& list, int currency);
    /// Replaces the map by the prices of the list; of equal names the last one counts.
    static void BackupPrices(const tList& list, tPrices& prices);
    /// Sets the prices of entries that the map knows by name.
    static void RestorePrices(const tList& list, const tPrices& prices);
};

#include "Stock/UStockBalance.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "Elements/Utilities/UCountedElementVectorOperations.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Stock/CStock.h"

#include <boost/foreach.hpp>

#include <map>
#include <memory>
#include <string_view>
#include <utility>

namespace {
/// Makes entries. Each article is called by a number of its own, the same in both lists: so names of any characters and
/// lengths are told apart, and remain so where the core joins two to a key, or looks at one of them only.
class CEntries {
public:
    std::unique_ptr<CCountedCIG> Make(const UStockBalance::tAmount& amount)
    {
        const auto found = mNumbers.try_emplace({amount.library, amount.number}, mNumbers.size()).first;
        CCompositeGeometry element;
        element.SetRailSetName("any");
        element.SetName(std::to_string(found->second).c_str());
        return std::make_unique<CCountedCIG>(&element, amount.count);
    }

private:
    std::map<std::pair<std::string_view, std::string_view>, size_t> mNumbers;
};

/// The counts of what is left of a list, by the place in it. What is not left any more has none.
using tPlaces = std::map<std::string, size_t, std::less<>>;

std::vector<int> CountsOf(const UElementStatistics::tList& left, const tPlaces& places, size_t size)
{
    std::vector<int> counts(size, 0);
    BOOST_FOREACH(const CCountedCIG* entry, left) {
        counts[places.find(std::string_view(entry->GetName()))->second] = entry->GetCount();
    }
    return counts;
}
} // namespace

void UStockBalance::Compare(const tAmounts& needed, const tAmounts& owned, std::vector<int>& required,
                            std::vector<int>& remaining)
{
    CEntries entries;
    CStock stock;
    tPlaces ownedPlaces;
    BOOST_FOREACH(const tAmount& amount, owned) {
        std::unique_ptr<CCountedCIG> entry = entries.Make(amount);
        ownedPlaces.emplace(entry->GetName(), ownedPlaces.size());
        if (stock.AddElement(entry.get()) == 1) {
            (void)entry.release(); // the stock's now
        }
    }
    UElementStatistics::tList list;
    tPlaces neededPlaces;
    BOOST_FOREACH(const tAmount& amount, needed) {
        list.push_back(entries.Make(amount).release());
        neededPlaces.emplace(list.back()->GetName(), neededPlaces.size());
    }
    UElementStatistics::tList left;
    stock.GetElements(left);
    UElementStatistics::GetRemainingStockStatistics(list, left);
    remaining = CountsOf(left, ownedPlaces, owned.size());
    UCountedElementVectorOperations::EraseAll(left);
    UElementStatistics::GetRequiredElementStatistics(list, &stock);
    required = CountsOf(list, neededPlaces, needed.size());
    UCountedElementVectorOperations::EraseAll(list);
}

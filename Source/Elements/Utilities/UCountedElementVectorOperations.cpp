#include "Elements/Utilities/UCountedElementVectorOperations.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "CheckError/CErr.h"

#include <boost/foreach.hpp>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

CCountedCIG* UCountedElementVectorOperations::FindElement(const tList& list, const char* name)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        if (std::strcmp(entry->GetName(), name) == 0) {
            return entry;
        }
    }
    return nullptr;
}

void UCountedElementVectorOperations::ClearZeroCountElements(tList& list)
{
    const auto isSpent = [](CCountedCIG* entry) {
        if (entry->GetCount() != 0) {
            return false;
        }
        delete entry;
        return true;
    };
    list.erase(std::remove_if(list.begin(), list.end(), isSpent), list.end());
}

void UCountedElementVectorOperations::EraseAll(tList& list)
{
    BOOST_FOREACH(CCountedCIG* entry, list) {
        delete entry;
    }
    list.clear();
}

void UCountedElementVectorOperations::Copy(const tList& source, tList& target)
{
    target.reserve(target.size() + source.size());
    BOOST_FOREACH(CCountedCIG* entry, source) {
        target.push_back(new CCountedCIG(entry));
    }
}

int UCountedElementVectorOperations::GetSumOfAllElements(const tList& list)
{
    int64_t sum = 0;
    BOOST_FOREACH(const CCountedCIG* entry, list) {
        sum += entry->GetCount();
    }
    using tLimits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<int64_t>(sum, tLimits::min(), tLimits::max()));
}

void UCountedElementVectorOperations::Dump(const tList& list, const char* label)
{
    if (label != nullptr) {
        CErr::DebugPrint("%s", label);
    }
    CErr::DebugPrint("Dumping Vector with %d elements", static_cast<int>(list.size()));
    BOOST_FOREACH(const CCountedCIG* entry, list) {
        CErr::DebugPrint(" '%s', count %d", entry->GetName(), entry->GetCount());
    }
}

#include "BuildingBlocks/CCountedCIG.h"

#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {
using tLimits = std::numeric_limits<int>;
}

std::unique_ptr<CCountedCIG> CCountedCIG::ForStatistics(CCompositeGeometry* element)
{
    std::unique_ptr<CCountedCIG> entry(new CCountedCIG(element->GetLibraryItemAttributes(), 1));
    const CBasicGeometry* first = element->GetBIGAtIndex(0);
    if (!element->HasRailSetName() && first != nullptr && first->GetType() == kFlexTrackType) {
        const auto* flex = static_cast<const CFlexTrackBIG*>(first);
        auto kind = std::make_unique<CFlexTrackBIG>();
        kind->SpecifyFlexGeometry(0.0, 0.0, {}, 0.0, 0.0, flex->GetFlexTrackMaxLength());
        entry->AppendBIG(kind.release());
    }
    return entry;
}

void CCountedCIG::IncCount(int n)
{
    mCount = static_cast<int>(std::clamp<int64_t>(int64_t{mCount} + n, tLimits::min(), tLimits::max()));
}

void CCountedCIG::DecCount(int n)
{
    mCount = static_cast<int>(std::clamp<int64_t>(int64_t{mCount} - n, 0, tLimits::max()));
}

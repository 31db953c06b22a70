#include "BuildingBlocks/CCountedCIG.h"

#include <algorithm>

std::unique_ptr<CCountedCIG> CCountedCIG::ForStatistics(CCompositeGeometry* element)
{
    if (element->HasRailSetName()) {
        return std::unique_ptr<CCountedCIG>(new CCountedCIG(element->GetLibraryItemAttributes(), 1));
    }
    return std::make_unique<CCountedCIG>(element, 1);
}

void CCountedCIG::DecCount(int n)
{
    mCount = std::max(mCount - n, 0);
}

// An element with a count.
#pragma once

#include "BuildingBlocks/CCompositeGeometry.h"

/// An entry of parts lists, stock lists and usage statistics: a copy of an element, and how many it stands for.
class CCountedCIG : public CCompositeGeometry {
public:
    CCountedCIG(CCompositeGeometry* element, int count) : CCompositeGeometry(element), mCount(count) {}
    explicit CCountedCIG(CCountedCIG* other) : CCompositeGeometry(other), mCount(other->mCount) {}

    int GetCount() const { return mCount; }
    /// Raises the count, as far as 32 bits reach: stock files may claim anything.
    void IncCount(int n);
    /// Lowers the count, but not below 0.
    void DecCount(int n);

private:
    int mCount;
};

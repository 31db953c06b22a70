// An element with a count.
#pragma once

#include "BuildingBlocks/CCompositeGeometry.h"

#include <memory>

/// An entry of parts lists, stock lists and usage statistics: a copy of an element, of its own, and how often it
/// counts.
class CCountedCIG : public CCompositeGeometry {
public:
    CCountedCIG(CCompositeGeometry* element, int count) : CCompositeGeometry(element), mCount(count) {}
    explicit CCountedCIG(CCountedCIG* other) : CCompositeGeometry(other), mCount(other->mCount) {}

    /// An entry for statistics: the library attributes, which is all that a list of parts asks of a library element.
    /// Elements without library are told by their kind: a flexible track's entry has one without points, but of its
    /// maximum length.
    static std::unique_ptr<CCountedCIG> ForStatistics(CCompositeGeometry* element);

    int GetCount() const { return mCount; }
    /// Raises the count, as far as 32 bits reach: stock files may claim anything.
    void IncCount(int n);
    /// Lowers the count, but not below 0.
    void DecCount(int n);

private:
    CCountedCIG(const tLibraryItemAttributes& library, int count) : CCompositeGeometry(library), mCount(count) {}

    int mCount;
};

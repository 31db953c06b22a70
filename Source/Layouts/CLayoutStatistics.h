// The running list of parts of one layout.
#pragma once

#include "Elements/Utilities/UElementStatistics.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;
class CLayout;

/// Counts the library elements and flexible tracks of a layout by article name while elements come and go. An index
/// beside the list finds an entry; so whoever is handed entries may change their prices, but not their names.
class CLayoutStatistics {
public:
    using tList = std::vector<CCountedCIG*>;

    /// @param layout  whose elements are counted; not owned
    explicit CLayoutStatistics(CLayout* layout);
    virtual ~CLayoutStatistics();
    CLayoutStatistics(const CLayoutStatistics&) = delete;
    CLayoutStatistics& operator=(const CLayoutStatistics&) = delete;

    /// Counts anew; the longest names come first then.
    void Refresh(const std::vector<CCompositeGeometry*>& elements);
    /// Counts an element, if it is a part; a new name comes last.
    void ElementAdded(CCompositeGeometry* element);
    /// Counts one less of the element's name, part or not; an entry that reaches 0 goes.
    void ElementRemoved(CCompositeGeometry* element);
    /// The same for several elements, with one look for entries that reached 0.
    void ElementsRemoved(const std::unordered_set<CCompositeGeometry*>& elements);
    /// Called after every change. Nobody listens so far.
    void StatisticsChanged() {}

    void GetElementStatistics(tWSStatRec& record) const;
    /// @param list  replaced by entries that the caller owns
    void GetRailsetStatistics(tList& list) const;
    /// Sum of the track lengths of all elements, mm.
    double GetOverallTrackLength() const;
    /// @param copy  true: `out`, which owns its entries, is emptied and filled with copies; false: it becomes the list
    /// of the
    ///              entries themselves, which stay owned here
    void GetLibraryElementUsageStatistics(tList& out, bool copy) const;
    /// Count of the entry of that name, or 0. The library is not looked at.
    int GetItemUsage(const char* library, const char* name) const;
    /// The entry of that name, owned here, or null. Costs the same however many entries there are.
    CCountedCIG* FindUsage(const char* name) const;

private:
    void EraseAll();
    void CountOneLess(const CCompositeGeometry* element, bool& spent);

    CLayout* mLayout;
    tList mUsage;                                               ///< owned
    std::unordered_map<std::string_view, CCountedCIG*> mByName; ///< keys lie in the entries
    mutable CCountedCIG* mLastFound = nullptr; ///< price and count of an added element ask for the same entry
};

// The running list of parts of one layout.
#pragma once

#include "BuildingBlocks/CElementImages.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/CNameIndex.h"

#include <memory>
#include <unordered_set>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;
class CLayout;

/// Counts the library elements and flexible tracks of a layout by article name while elements come and go. Each name
/// has an entry, a copy of the first element of it as it was when it was counted. Entries are images until somebody
/// asks for them, which most loads never do. Once handed out they stay, with all that is changed on them; only the name
/// must not be changed, since it finds the entry.
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
    /// Gives an element, if it is a part, the price of the entry of its name, if there is one; the currency stays.
    void MatchPrice(CCompositeGeometry* element) const;
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
    ///              of the entries themselves, which stay owned here
    void GetLibraryElementUsageStatistics(tList& out, bool copy) const;
    /// Count of the entry of that name, or 0. The library is not looked at.
    int GetItemUsage(const char* library, const char* name) const;
    /// The entry of that name, owned here, or null. Costs the same however many entries there are.
    CCountedCIG* FindUsage(const char* name) const;

private:
    /// An entry, and until somebody asks for it what serves in its place.
    struct tUsage {
        int count = 0;
        int price = 0;
        CElementImages::tImage image;
        std::unique_ptr<CCountedCIG> entry;

        const char* GetName() const;
        int GetCount() const;
    };

    void EraseAll();
    void Count(CCompositeGeometry* element);
    void CountOneLess(const CCompositeGeometry* element, bool& spent);
    void RemoveSpent();
    void IndexAnew();
    /// @return what is known of that name, or null
    tUsage* Find(const char* name) const;
    CCountedCIG* GetEntry(tUsage& usage) const;

    CLayout* mLayout;
    mutable std::vector<tUsage> mUsages; ///< in the order of the list
    CNameIndex mByName;
    mutable CElementImages mImages;
    mutable size_t mLastFound = CNameIndex::kNowhere; ///< price and count of an added element ask for the same entry
};

// Counts over elements and the plain-text summary of a layout.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;
class CStock;

/// How many elements of each kind. Generic elements belong to no library.
struct tWSStatRec {
    uint32_t tracks = 0;      ///< library elements with a track component
    uint32_t accessories = 0; ///< library elements without
    uint32_t flexTracks = 0;  ///< generic elements whose first component is a flexible track
    uint32_t graphics = 0;    ///< generic elements of other kinds
    uint32_t texts = 0;       ///< generic elements whose first component is a text
};

/// Strict order by article name, byte by byte.
struct CCountedCIGProdNrLessThan {
    bool operator()(const CCountedCIG* a, const CCountedCIG* b) const;
};

/// True when the first entry's article name is longer than the second's: lists of parts show long numbers first. The
/// texts themselves are not compared.
struct CCompCountedCIG_CompProdNr {
    bool operator()(const CCountedCIG* a, const CCountedCIG* b) const;
};

/// Statistics of element vectors. The entries of the lists they fill are copies of elements and belong to the caller.
/// Every operation is linear in the number of elements.
class UElementStatistics {
public:
    UElementStatistics() = delete;

    using tElements = std::vector<CCompositeGeometry*>;
    using tList = std::vector<CCountedCIG*>;
    using tScaleHistogram = std::map<int, int>;

    /// The layout in words, Mac OS Roman: of each library, in order of first appearance, its name, a blank and the name
    /// of the first article used; then the texts in element order; each followed by ", ".
    static std::string GetContentSummaryAsString(const tElements& elements);
    /// Replaces `list` by one entry per library, in order of first appearance, made from its first element; old entries
    /// are not released.
    static void GetRailsetUsageStatistics(const tElements& elements, tList& list);
    /// Replaces `list` by one entry per article name, longest name first, of all elements that a list of parts shows;
    /// old entries are not released. Libraries that share a name share an entry.
    static void GetLibraryElementUsageStatistics(const tElements& elements, tList& list);
    /// Library elements and flexible tracks are parts; other generic elements are not.
    static bool ElementIsDisplayedInPartlist(const CCompositeGeometry* element);
    static void GetItemTypeStatistics(const tElements& elements, tWSStatRec& record);
    /// Adds the track elements of each model scale to the histogram.
    static void GetModelScaleTrackStatistics(const tElements& elements, tScaleHistogram& histogram);
    /// Lowers each count by what the stock holds of the article, of that library and number; entries with nothing left
    /// to buy are destroyed and removed, the others keep their order.
    static void GetRequiredElementStatistics(tList& list, const CStock* stock);
    /// Replaces `stock` by new entries with what remains of it after `used` is taken out, matched by name; used-up
    /// entries are left out. The old entries are not destroyed.
    static void GetRemainingStockStatistics(const tList& used, tList& stock);
};

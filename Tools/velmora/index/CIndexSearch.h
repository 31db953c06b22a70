// Queries on an index.
#pragma once

#include "index/CPassageFinder.h"
#include "index/CQuery.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CIndexDatabase;

/// How the words of a query are in a document: all as they are, or some as beginnings or other parts of words.
enum class eWordMatch { kWhole, kBeginning, kPart };

/// A found document.
struct tFoundDocument {
    std::string path;
    std::string author;
    std::string description;
    std::string revision;
    tPassage passage;
    bool isRanked = false;                 ///< whether the next two are known
    eWordMatch match = eWordMatch::kWhole; ///< the best come first
    double score = 0;                      ///< of those with the same match: the greater the better
    int64_t size = 0;
    std::optional<int64_t> modified; ///< seconds since 1970, like the next one. What is missing is not known
    std::optional<int64_t> created;  ///< by the document's own clock
    std::optional<int64_t> elements;
    std::optional<int64_t> tracks; ///< mm
    std::vector<std::string> gauges;
};

enum class eSearchOrder { kRelevance, kName, kModified, kAuthor };

/// What is wanted of what a query finds.
struct tSearchWish {
    std::string folder; ///< where documents must lie; empty for everywhere
    eSearchOrder order = eSearchOrder::kRelevance;
    int64_t offset = 0;      ///< so many are passed over
    int64_t limit = 0;       ///< so many at most; 0 for all
    bool hasPassages = true; ///< they are wanted, too
};

/// One query. Errors of the database are thrown as SQLite's own std::exception.
///
/// Words find documents with them first, then those with words that begin like them, then those with words that they
/// are a part of; each of these the best first. Where far more match than are wanted, not all of them are ranked: those
/// with every word in name, author or description come first, of the others those that were indexed first.
class CIndexSearch {
public:
    /// @param index       outlives this
    /// @param wholeWords  beginnings and parts only where a * says so
    CIndexSearch(CIndexDatabase& index, std::string_view query, bool wholeWords = false);
    ~CIndexSearch();
    CIndexSearch(const CIndexSearch&) = delete;
    CIndexSearch& operator=(const CIndexSearch&) = delete;

    /// What is wrong with the query, see CQuery.
    const CQuery& GetQuery() const;

    /// How many documents there are. @param folder  see tSearchWish
    int64_t Count(const std::string& folder);

    /// @param use  takes one document after the other, and answers false to end
    /// @return whether there are more than the limit lets through
    bool Find(const tSearchWish& wish, const std::function<bool(const tFoundDocument&)>& use);

    /// Of what was not looked for, for people: a line each. Complete after a count or search.
    const std::vector<std::string>& GetNotes() const;

    /// The query with words of the index in place of those that it does not have; empty when there are none.
    std::string Suggest();

private:
    class CImpl;
    std::unique_ptr<CImpl> mImpl;
};

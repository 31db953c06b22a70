// The words of an index, each once, to find those that something is a part of.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace SQLite {
class Database;
}

/// Collects the words of documents while they are stored, and writes them to the table `vocabulary`. A row of it holds
/// many words with line breaks around them, so that all are looked through as fast as memory is read. A word may stand
/// in several rows. Words of documents that have gone stay until the index is rebuilt; they find nothing.
class CVocabulary {
public:
    /// A word of a document. Very long ones are left out: nobody looks for a part of them.
    void Take(std::string_view word);
    /// Writes what was taken. @param isDue  only if it is much
    void Store(SQLite::Database& database, bool isDue);
    /// Removes all words.
    void Clear(SQLite::Database& database);

    /// A part of words that is looked for.
    struct tWanted {
        enum class ePlace { kBeginning, kInside, kEnd, kAnywhere };
        std::string part;
        ePlace place;
        /// Receives the words, the shortest first, at most Bounds::kMostPartWords: kBeginning and kInside without the
        /// part itself, kInside without those that begin with it.
        std::set<std::pair<size_t, std::string>> words;
        bool isCut = false; ///< there are more
    };
    static void Find(SQLite::Database& database, std::vector<tWanted>& wanted);

    /// Words that a mistyped one may have meant, the nearest first: of two mistakes at most (a letter too many, too
    /// few, another, or two changed places), of one in a short word.
    static std::vector<std::string> FindSimilar(SQLite::Database& database, std::string_view word);

private:
    void Merge(SQLite::Database& database);

    std::unordered_set<std::string> mKnown; ///< taken by this object, as far as it has room
    std::string mPending;                   ///< not written yet, a line break behind each
};

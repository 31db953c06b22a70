// The part of a document that shows best why it was found.
#pragma once

#include "index/Tokenizer.h"

#include <string>
#include <string_view>
#include <vector>

/// A part of one of a document's texts, with "…" where the text goes on.
struct tPassage {
    struct tMatch {
        size_t start = 0; ///< byte
        size_t end = 0;
    };
    std::string field; ///< the column; empty when nothing was found
    std::string text;
    std::vector<tMatch> matches; ///< in its order, apart from each other
};

/// Looks for what a query wants in the texts of one document after the other.
class CPassageFinder {
public:
    /// Words that follow each other.
    struct tTerm {
        enum class eEdge { kWhole, kBegins, kEnds, kContains };
        std::string column;                          ///< where they must be; empty for everywhere
        std::vector<std::vector<std::string>> words; ///< of each the forms it may have
        eEdge edge = eEdge::kWhole;                  ///< how the last one lies in its word
    };

    /// @param splitter  outlives this
    CPassageFinder(CSplitter& splitter, std::vector<tTerm> terms) : mSplitter(splitter), mTerms(std::move(terms)) {}

    /// Begins a document.
    void Clear();
    /// Takes one of its texts, the most telling first.
    void Look(const std::string& column, const std::string& text);
    /// The passage with most of the terms.
    tPassage Take();

private:
    struct tHit {
        size_t first = 0; ///< word of the text
        size_t last = 0;
        size_t term = 0;
        int worth = 0;
    };
    size_t CountFollowing(const std::vector<tWord>& words, size_t at, const tTerm& term, int& worth) const;
    void Choose(const std::string& column, const std::string& text, const std::vector<tWord>& words,
                const std::vector<tHit>& hits);

    CSplitter& mSplitter;
    std::vector<tTerm> mTerms;
    tPassage mBest;
    int mBestWorth = 0;
};

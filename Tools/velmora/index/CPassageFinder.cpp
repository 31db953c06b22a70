#include "index/CPassageFinder.h"

#include "Bounds.h"

#include <algorithm>
#include <utility>

namespace {
using eEdge = CPassageFinder::tTerm::eEdge;

constexpr size_t kPassageWords = 14;

/// What a term more in a passage is worth, and in what part of its word it is found. More of the same adds little.
constexpr int kTermWorth = 100;
constexpr int kWholeWorth = 30;
constexpr int kBeginningWorth = 20;
constexpr int kPartWorth = 10;

/// Behind so many in a text the best passage has long been found.
constexpr size_t kMostHits = 10000;

constexpr std::string_view kCut = "…";

/// @return 0 when the word is not meant
int WorthOf(const std::string& word, const std::string& form, eEdge edge)
{
    if (word == form) {
        return kWholeWorth;
    }
    switch (edge) {
    case eEdge::kWhole:
        return 0;
    case eEdge::kBegins:
        return word.starts_with(form) ? kBeginningWorth : 0;
    case eEdge::kEnds:
        return word.ends_with(form) ? kPartWorth : 0;
    case eEdge::kContains:
        return word.starts_with(form) ? kBeginningWorth : word.find(form) != std::string::npos ? kPartWorth : 0;
    }
    return 0;
}

/// A text in UTF-8 of this many bytes at most, whole characters.
std::string_view Beginning(std::string_view text, size_t most)
{
    size_t size = std::min(text.size(), most);
    while (size > 0 && size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}
} // namespace

void CPassageFinder::Clear()
{
    mBest = {};
    mBestWorth = 0;
}

tPassage CPassageFinder::Take()
{
    return std::exchange(mBest, {});
}

/// How many words of the text, spellings among them, a term takes from one on. @return 0 when it is not there
size_t CPassageFinder::CountFollowing(const std::vector<tWord>& words, size_t at, const tTerm& term, int& worth) const
{
    const size_t start = at;
    for (size_t i = 0; i < term.words.size(); ++i) {
        const eEdge edge = i + 1 == term.words.size() ? term.edge : eEdge::kWhole;
        worth = 0;
        size_t next = at;
        do { // the word and its spellings
            for (const std::string& form : term.words[i]) {
                worth = next < words.size() ? std::max(worth, WorthOf(words[next].form, form, edge)) : 0;
            }
            ++next;
        } while (next < words.size() && words[next].isSpelling);
        if (worth == 0) {
            return 0;
        }
        at = next;
    }
    return at - start;
}

void CPassageFinder::Look(const std::string& column, const std::string& text)
{
    if (text.empty() || std::none_of(mTerms.begin(), mTerms.end(),
                                     [&](const tTerm& term) { return term.column.empty() || term.column == column; })) {
        return;
    }
    const std::vector<tWord> words = mSplitter.Split(Beginning(text, Bounds::kMostPassageText));
    std::vector<tHit> hits;
    for (size_t at = 0; at < words.size() && hits.size() < kMostHits; ++at) {
        if (words[at].isSpelling) {
            continue;
        }
        for (size_t term = 0; term < mTerms.size(); ++term) {
            int worth = 0;
            const bool isHere = mTerms[term].column.empty() || mTerms[term].column == column;
            if (const size_t count = isHere ? CountFollowing(words, at, mTerms[term], worth) : 0; count > 0) {
                hits.push_back({at, at + count - 1, term, worth});
            }
        }
    }
    Choose(column, text, words, hits);
}

/// Keeps the best window of this text, if it is better than what there is.
void CPassageFinder::Choose(const std::string& column, const std::string& text, const std::vector<tWord>& words,
                            const std::vector<tHit>& hits)
{
    // Windows begin at a hit: from there to the last one that fits.
    std::vector<int> best(mTerms.size()); // of each term in the window
    size_t from = hits.size();
    size_t to = 0;
    for (size_t first = 0; first < hits.size(); ++first) {
        size_t end = first;
        int worth = 0;
        std::fill(best.begin(), best.end(), 0);
        // So far and no further where much was found: the rest of the passage cannot be better by much.
        for (; end < hits.size() && end < first + 4 * kPassageWords &&
               hits[end].first < hits[first].first + kPassageWords;
             ++end) {
            int& known = best[hits[end].term];
            worth += (known == 0 ? kTermWorth : 0) + std::max(hits[end].worth - known, 0) + 1;
            known = std::max(known, hits[end].worth);
        }
        if (worth > mBestWorth) {
            mBestWorth = worth;
            from = first;
            to = end;
        }
    }
    if (from == hits.size()) {
        return;
    }
    // The words before and behind fill the passage up, so that matches are in its middle.
    const size_t matched = hits[to - 1].last + 1 - hits[from].first;
    const size_t spare = kPassageWords > matched ? kPassageWords - matched : 0;
    size_t first = hits[from].first - std::min(hits[from].first, spare / 2);
    const size_t last = std::min(std::max(first + kPassageWords, hits[to - 1].last + 1), words.size()) - 1;
    first = last + 1 < kPassageWords ? 0 : std::min(first, last + 1 - kPassageWords);
    const size_t start = first == 0 ? 0 : words[first].start;
    const size_t end = last + 1 == words.size() ? text.size() : words[last].end;
    mBest = {column, std::string(start > 0 ? kCut : ""), {}};
    const size_t shift = mBest.text.size();
    mBest.text.append(text, start, end - start).append(end < text.size() ? kCut : "");
    for (const tHit& hit : hits) {
        if (hit.first < first || hit.last > last) {
            continue;
        }
        const tPassage::tMatch match = {words[hit.first].start - start + shift, words[hit.last].end - start + shift};
        if (!mBest.matches.empty() && match.start <= mBest.matches.back().end) {
            mBest.matches.back().end = std::max(mBest.matches.back().end, match.end);
        } else {
            mBest.matches.push_back(match);
        }
    }
}

#include "commands/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <numeric>

/// A word that differs by more edits than this is no typing error.
static constexpr size_t kMostEdits = 2;
/// No word that is suggested is that long, and the table of edits would be.
static constexpr size_t kLongest = 64;

/// Insertions, removals, replacements and exchanges of neighbours that turn one word into the other.
static size_t CountEdits(std::string_view from, std::string_view to)
{
    const auto isSame = [](char one, char other) {
        return tolower(static_cast<unsigned char>(one)) == tolower(static_cast<unsigned char>(other));
    };
    std::vector<std::vector<size_t>> edits(from.size() + 1, std::vector<size_t>(to.size() + 1));
    std::iota(edits[0].begin(), edits[0].end(), size_t{0});
    for (size_t i = 1; i <= from.size(); ++i) {
        edits[i][0] = i;
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = edits[i - 1][j - 1] + (isSame(from[i - 1], to[j - 1]) ? 0 : 1);
            edits[i][j] = std::min({replaced, edits[i - 1][j] + 1, edits[i][j - 1] + 1});
            if (i > 1 && j > 1 && isSame(from[i - 1], to[j - 2]) && isSame(from[i - 2], to[j - 1])) {
                edits[i][j] = std::min(edits[i][j], edits[i - 2][j - 2] + 1);
            }
        }
    }
    return edits.back().back();
}

std::string Suggestion::Find(std::string_view mistyped, const std::vector<std::string>& words)
{
    std::string best;
    size_t fewest = kMostEdits + 1;
    if (mistyped.size() > kLongest) {
        return best;
    }
    for (const std::string& word : words) {
        const size_t edits = CountEdits(mistyped, word);
        if (edits < fewest && edits < word.size()) {
            fewest = edits;
            best = word;
        }
    }
    return best;
}

std::string Suggestion::Ask(std::string_view mistyped, const std::vector<std::string>& words)
{
    const std::string meant = Find(mistyped, words);
    return meant.empty() ? meant : "; did you mean '" + meant + "'?";
}

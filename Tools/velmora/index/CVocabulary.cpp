#include "index/CVocabulary.h"

#include "Bounds.h"
#include "protocol/UTF8.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>

/// Bytes of a row: much more would be held in memory at a time for nothing.
static constexpr size_t kRowBytes = size_t{1} << 20;
/// Rows before they are merged: each run adds one for each of its portions, most with words that are known.
static constexpr int64_t kMostRows = 256;
/// Bytes that are merged, which takes some ten times as much memory.
static constexpr int64_t kMostMergedBytes = int64_t{64} << 20;
/// Words that are remembered as known, some 60 bytes each.
static constexpr size_t kMostKnown = 500000;

void CVocabulary::Take(std::string_view word)
{
    if (word.size() > Bounds::kLongestPart || mPending.size() > Bounds::kMostNewWordBytes) {
        return;
    }
    if (mKnown.size() >= kMostKnown) {
        mKnown.clear();
    }
    if (mKnown.emplace(word).second) {
        mPending.append(word).push_back('\n');
    }
}

static int64_t Insert(SQLite::Database& database, const std::string& words)
{
    SQLite::Statement row(database, "INSERT INTO vocabulary (words) VALUES (?1)");
    row.bindNoCopy(1, words);
    row.exec();
    return database.getLastInsertRowid();
}

void CVocabulary::Store(SQLite::Database& database, bool isDue)
{
    if (mPending.empty() || (isDue && mPending.size() < kRowBytes)) {
        return;
    }
    const int64_t row = Insert(database, "\n" + std::exchange(mPending, {}));
    if (row > kMostRows) { // ids begin anew after a merge, as none is left
        Merge(database);
    }
}

void CVocabulary::Clear(SQLite::Database& database)
{
    database.exec("DELETE FROM vocabulary");
    mKnown.clear();
    mPending.clear();
}

/// Hands on each row, which begins and ends with a line break.
static void ForEachRow(SQLite::Database& database, const std::function<void(std::string_view)>& use)
{
    SQLite::Statement row(database, "SELECT words FROM vocabulary ORDER BY id");
    while (row.executeStep()) {
        const auto* const text = static_cast<const char*>(row.getColumn(0).getBlob());
        const std::string_view words(text != nullptr ? text : "", static_cast<size_t>(row.getColumn(0).getBytes()));
        if (words.size() >= 2 && words.front() == '\n' && words.back() == '\n') {
            use(words);
        }
    }
}

static void ForEachWord(std::string_view row, const std::function<void(std::string_view)>& use)
{
    for (size_t at = 1; at < row.size();) {
        const size_t end = row.find('\n', at);
        use(row.substr(at, end - at));
        at = end + 1;
    }
}

void CVocabulary::Merge(SQLite::Database& database)
{
    if (database.execAndGet("SELECT sum(length(words)) FROM vocabulary").getInt64() > kMostMergedBytes) {
        return;
    }
    std::unordered_set<std::string> all;
    ForEachRow(database,
               [&](std::string_view row) { ForEachWord(row, [&](std::string_view word) { all.emplace(word); }); });
    database.exec("DELETE FROM vocabulary");
    std::string words = "\n";
    for (const std::string& word : all) {
        words.append(word).push_back('\n');
        if (words.size() >= kRowBytes) {
            Insert(database, words);
            words = "\n";
        }
    }
    if (words.size() > 1) {
        Insert(database, words);
    }
}

/// Looks for a part in a row. @param use  takes each word that it is in, and where
static void FindPart(std::string_view row, const std::string& part,
                     const std::function<void(std::string_view word, size_t at)>& use)
{
    for (size_t at = 0; at < row.size();) {
        const void* const found = memmem(row.data() + at, row.size() - at, part.data(), part.size());
        if (found == nullptr) {
            return;
        }
        const size_t place = static_cast<size_t>(static_cast<const char*>(found) - row.data());
        const size_t start = row.rfind('\n', place) + 1;
        const size_t end = row.find('\n', place);
        use(row.substr(start, end - start), place - start);
        at = end;
    }
}

void CVocabulary::Find(SQLite::Database& database, std::vector<tWanted>& wanted)
{
    using ePlace = tWanted::ePlace;
    ForEachRow(database, [&](std::string_view row) {
        for (tWanted& one : wanted) {
            if (one.part.empty()) {
                continue;
            }
            FindPart(row, one.part, [&one](std::string_view word, size_t at) {
                const bool fits = one.place == ePlace::kBeginning ? at == 0 && word != one.part
                                  : one.place == ePlace::kInside  ? at > 0
                                  : one.place == ePlace::kEnd     ? word.ends_with(one.part)
                                                                  : true;
                if (!fits || (one.words.size() >= Bounds::kMostPartWords && word.size() > one.words.rbegin()->first)) {
                    one.isCut = one.isCut || fits;
                    return;
                }
                one.words.emplace(word.size(), word);
                if (one.words.size() > Bounds::kMostPartWords) {
                    one.words.erase(std::prev(one.words.end()));
                    one.isCut = true;
                }
            });
        }
    });
}

/// How many mistakes lead from one word to the other; more than `most` is all the same.
static size_t CountMistakes(std::u32string_view a, std::u32string_view b, size_t most)
{
    std::vector<size_t> before;
    std::vector<size_t> last(b.size() + 1);
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (size_t i = 1; i <= a.size(); ++i) {
        before.swap(last);
        last.swap(row);
        row.assign(b.size() + 1, i);
        for (size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], before[j - 2] + 1);
            }
        }
        if (*std::min_element(row.begin(), row.end()) > most) {
            return most + 1;
        }
    }
    return row.back();
}

static std::u32string Characters(std::string_view text)
{
    std::u32string characters;
    for (size_t at = 0; at < text.size();) {
        characters += UTF8::DecodeNext(text, at);
    }
    return characters;
}

std::vector<std::string> CVocabulary::FindSimilar(SQLite::Database& database, std::string_view word)
{
    constexpr size_t kShort = 5;
    constexpr size_t kMostSimilar = 50;
    const std::u32string wanted = Characters(word);
    size_t most = wanted.size() < kShort ? 1 : 2;
    std::set<std::pair<size_t, std::string>> nearest;
    ForEachRow(database, [&](std::string_view row) {
        ForEachWord(row, [&](std::string_view other) {
            // A character has four bytes at most: this leaves out nearly all, and no near one.
            if (other.size() > (wanted.size() + most) * 4 || other.size() + most < wanted.size()) {
                return;
            }
            const std::u32string characters = Characters(other);
            if (characters.size() > wanted.size() + most || characters.size() + most < wanted.size()) {
                return;
            }
            const size_t mistakes = CountMistakes(wanted, characters, most);
            if (mistakes > 0 && mistakes <= most) {
                nearest.emplace(mistakes, other);
                if (nearest.size() > kMostSimilar) {
                    nearest.erase(std::prev(nearest.end()));
                }
            }
        });
    });
    std::vector<std::string> words;
    for (const auto& [mistakes, similar] : nearest) {
        if (mistakes == nearest.begin()->first) {
            words.push_back(similar);
        }
    }
    return words;
}

// How well a document fits a query.
#pragma once

struct sqlite3;

/// BM25 with a weight for each column, like SQLite's own function, but with a bounded look at how common a word is:
/// that one goes through all documents of each word before it ranks the first, which takes longer than finding them
/// where words are common.
namespace Ranking {
/// The name of the function: `velmora_rank(words)`, the greater the better.
inline constexpr const char* kFunction = "velmora_rank";

/// Makes it known to a connection whose full-text index has the columns of `words`. @return false without FTS5
bool Register(sqlite3* connection);
} // namespace Ranking

// What a search says in JSON, and where else a query is answered.
#pragma once

#include "index/CIndexSearch.h"
#include "output/JSON.h"

#include <functional>
#include <string>

class CIndexDatabase;

/// What is asked of an index.
struct tSearchQuestion {
    std::string query; ///< as typed
    bool wholeWords = false;
    tSearchWish wish;
};

namespace SearchRecords {
/// A found document as a record: `path`, `ok`, and what is known of it. Offsets and lengths of matches count characters
/// (code points) of the passage.
/// @param isReachable  whether it could be opened now, as CIndexDatabase says
JSON::tRecord Make(const tFoundDocument& found, bool isReachable);

/// What is wrong with a query, for people, with the place; empty when nothing is.
std::string DescribeMistake(const CQuery& query, const std::string& text);

/// Answers a question with records, one document after the other.
/// @param use  takes a record, and answers false to end
/// @return empty, or what is wrong with the query. Errors of the index are thrown, see CIndexDatabase
std::string Answer(CIndexDatabase& index, const tSearchQuestion& question,
                   const std::function<bool(JSON::tRecord&)>& use);
} // namespace SearchRecords

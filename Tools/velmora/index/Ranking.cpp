#include "index/Ranking.h"

#include "index/Tokenizer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <sqlite3.h>
#include <vector>

namespace {
/// How much a match weighs, in the order of the columns of `words`: name, author, description, revision, layer,
/// library, article, text, folder.
constexpr double kWeights[] = {6.0, 4.0, 5.0, 1.0, 3.0, 2.0, 2.0, 1.0, 0.5};

// The usual parameters: how soon more of the same word stops to count, and how much a long document counts less.
constexpr double kSaturation = 1.2;
constexpr double kLengthShare = 0.75;

/// The weight of a word that is in nearly all documents.
constexpr double kLeastRarity = 1e-6;

/// Documents of a word that are looked at to see how rare it is: a tenth of a millisecond.
constexpr int64_t kMostLooks = 2000;

/// Of more phrases, which are parts of words then, none is taken to be rarer than the others: looking costs more than
/// it tells.
constexpr int kMostPhrases = 16;

/// What is the same for all documents that a query finds.
struct tQuery {
    std::vector<double> rarity;  ///< of each phrase
    double averageLength = 1;    ///< words of a document
    std::vector<double> weighed; ///< of each phrase, in the document at hand
};

/// Documents of a phrase that were seen, at the beginning of the index.
struct tLook {
    int64_t seen = 0;
    sqlite3_int64 last = 0; ///< the number of the last one
};

int Look(const Fts5ExtensionApi* api, Fts5Context* context, void* look)
{
    tLook& here = *static_cast<tLook*>(look);
    here.last = api->xRowid(context);
    return ++here.seen < kMostLooks ? SQLITE_OK : SQLITE_DONE;
}

/// @return an SQLite code
int Prepare(const Fts5ExtensionApi* api, Fts5Context* context, tQuery& query)
{
    const int phrases = api->xPhraseCount(context);
    sqlite3_int64 rows = 0;
    sqlite3_int64 words = 0;
    int result = api->xRowCount(context, &rows);
    result = result == SQLITE_OK ? api->xColumnTotalSize(context, -1, &words) : result;
    query.averageLength = rows > 0 && words > 0 ? static_cast<double>(words) / static_cast<double>(rows) : 1;
    if (phrases > kMostPhrases) {
        query.rarity.assign(static_cast<size_t>(phrases), 1.0);
    }
    for (int i = 0; i < phrases && phrases <= kMostPhrases && result == SQLITE_OK; ++i) {
        tLook look;
        result = api->xQueryPhrase(context, i, &look, Look);
        double hits = static_cast<double>(look.seen);
        if (look.seen >= kMostLooks) { // the rest is taken to be like the beginning
            hits *= std::max(1.0, static_cast<double>(rows) / static_cast<double>(std::max<int64_t>(look.last, 1)));
        }
        const double rarity = std::log((static_cast<double>(rows) - hits + 0.5) / (hits + 0.5));
        query.rarity.push_back(rarity > kLeastRarity ? rarity : kLeastRarity); // also for no number
    }
    query.weighed.resize(query.rarity.size());
    return result;
}

/// @return an SQLite code
int Rank(const Fts5ExtensionApi* api, Fts5Context* context, tQuery& query, double& rank)
{
    std::fill(query.weighed.begin(), query.weighed.end(), 0.0);
    int matches = 0;
    int result = api->xInstCount(context, &matches);
    for (int i = 0; i < matches && result == SQLITE_OK; ++i) {
        int phrase = 0;
        int column = 0;
        int offset = 0;
        result = api->xInst(context, i, &phrase, &column, &offset);
        if (result == SQLITE_OK && phrase >= 0 && static_cast<size_t>(phrase) < query.weighed.size() && column >= 0) {
            query.weighed[static_cast<size_t>(phrase)] +=
                static_cast<size_t>(column) < std::size(kWeights) ? kWeights[column] : 1.0;
        }
    }
    int length = 0;
    result = result == SQLITE_OK ? api->xColumnSize(context, -1, &length) : result;
    const double share = 1 - kLengthShare + kLengthShare * std::max(length, 0) / query.averageLength;
    rank = 0;
    for (size_t i = 0; i < query.weighed.size(); ++i) {
        rank += query.rarity[i] * query.weighed[i] * (kSaturation + 1) / (query.weighed[i] + kSaturation * share);
    }
    return result;
}

void RankRow(const Fts5ExtensionApi* api, Fts5Context* context, sqlite3_context* answer, int, sqlite3_value**)
{
    auto* query = static_cast<tQuery*>(api->xGetAuxdata(context, 0));
    int result = SQLITE_OK;
    if (query == nullptr) {
        auto made = std::make_unique<tQuery>();
        result = Prepare(api, context, *made);
        query = made.get();
        if (result == SQLITE_OK) { // which frees it where it fails, too
            result = api->xSetAuxdata(context, made.release(), [](void* old) { delete static_cast<tQuery*>(old); });
        }
    }
    double rank = 0;
    result = result == SQLITE_OK ? Rank(api, context, *query, rank) : result;
    if (result == SQLITE_OK) {
        sqlite3_result_double(answer, rank);
    } else {
        sqlite3_result_error_code(answer, result);
    }
}
} // namespace

bool Ranking::Register(sqlite3* connection)
{
    fts5_api* const api = Tokenizer::FindInterface(connection);
    return api != nullptr && api->xCreateFunction(api, kFunction, nullptr, RankRow, nullptr) == SQLITE_OK;
}

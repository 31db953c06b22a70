#include "index/CIndexSearch.h"

#include "Bounds.h"
#include "index/CIndexDatabase.h"
#include "index/CSearchExpression.h"
#include "index/PathRange.h"
#include "index/Ranking.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <algorithm>
#include <limits>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace {
/// A document that was found, and by what it comes before others.
struct tHit {
    int64_t id = 0;
    eWordMatch match = eWordMatch::kWhole;
    double score = 0;
};

constexpr int64_t kNoLimit = -1;
constexpr int64_t kLastRow = std::numeric_limits<int64_t>::max();

/// The texts of a document, those first whose matches tell most.
constexpr const char* kTextColumns[] = {"description", "author", "layer",  "library", "article",
                                        "text",        "name",   "folder", "revision"};
constexpr const char* kDocument =
    "SELECT description, author, layer, library, article, text, name, folder, revision, path, figure.size,"
    " figure.modified, created, elements, tracks, (SELECT group_concat(scale, char(10)) FROM gauge WHERE gauge.id ="
    " document.id) FROM document LEFT JOIN figure ON figure.id = document.id WHERE document.id = ?1";
enum eDocumentColumn {
    kDescription = 0,
    kAuthor = 1,
    kRevision = 8,
    kPath = 9,
    kSize,
    kModified,
    kCreated,
    kElements,
    kTracks,
    kGauges
};

std::optional<int64_t> NumberOf(const SQLite::Column& column)
{
    return column.isNull() ? std::nullopt : std::optional<int64_t>(column.getInt64());
}
} // namespace

class CIndexSearch::CImpl {
public:
    CImpl(CIndexDatabase& index, std::string_view query, bool wholeWords)
        : mDatabase(index.GetConnection()), mSplitter(mDatabase.getHandle()), mText(query),
          mQuery(query,
                 [this](std::string_view text) {
                     const std::vector<tWord> words = Split(text);
                     return static_cast<size_t>(
                         std::count_if(words.begin(), words.end(), [](const tWord& word) { return !word.isSpelling; }));
                 }),
          mExpression(
              mQuery.GetTree(), wholeWords, [this](std::string_view text) { return Split(text); },
              [this](std::vector<CVocabulary::tWanted>& wanted) { CVocabulary::Find(mDatabase, wanted); }),
          mReach(wholeWords || !mExpression.HasReach() ? eReach::kWhole : eReach::kParts)
    {}

    const CQuery& GetQuery() const { return mQuery; }
    const std::vector<std::string>& GetNotes() const { return mExpression.GetNotes(); }

    int64_t Count(const std::string& folder)
    {
        mFolder = folder;
        SQLite::Statement row = Prepare("count(*)", WidestText());
        row.executeStep();
        return row.getColumn(0).getInt64();
    }

    bool Find(const tSearchWish& wish, const std::function<bool(const tFoundDocument&)>& use)
    {
        mFolder = wish.folder;
        mHits.clear();
        mSeen.clear();
        const int64_t first = std::max<int64_t>(wish.offset, 0);
        const int64_t wanted = wish.limit > 0 ? std::min(wish.limit, kLastRow - first - 1) + first + 1 : 0;
        const bool isRanked = wish.order == eSearchOrder::kRelevance && mExpression.HasText();
        if (isRanked) {
            FindBest(wanted);
        } else {
            FindSorted(wish.order);
        }
        const auto size = static_cast<int64_t>(mHits.size());
        const int64_t last = wanted > 0 ? std::min(size, wanted - 1) : size;
        SQLite::Statement row(mDatabase, kDocument);
        CPassageFinder passages(mSplitter,
                                wish.hasPassages ? mExpression.GetTerms() : std::vector<CPassageFinder::tTerm>());
        for (int64_t i = first; i < last; ++i) {
            tFoundDocument found;
            found.isRanked = isRanked;
            if (Read(row, mHits[static_cast<size_t>(i)], passages, found) && !use(found)) {
                break;
            }
        }
        return last < size;
    }

    std::string Suggest()
    {
        std::string suggestion = mText;
        size_t behind = 0;
        for (const tQueryNode* node : mExpression.GetStrangers()) {
            const std::vector<tWord> words = Split(node->text);
            if (words.empty() || CountUpTo(node->text, node->column, 1) > 0) {
                continue;
            }
            std::pair<int64_t, std::string> best;
            for (const std::string& similar : CVocabulary::FindSimilar(mDatabase, words.front().form)) {
                const int64_t count = CountUpTo(similar, node->column, kCountedSimilar);
                best = count > best.first ? std::pair(count, similar) : best;
            }
            const size_t place = suggestion.find(node->text, behind);
            if (best.first > 0 && place != std::string::npos) {
                suggestion.replace(place, node->text.size(), best.second);
                behind = place + best.second.size();
            }
        }
        return suggestion == mText ? std::string() : suggestion;
    }

private:
    static constexpr int64_t kCountedSimilar = 1000;

    std::vector<tWord> Split(std::string_view text) { return mSplitter.Split(text); }

    std::string WidestText() { return mExpression.HasText() ? mExpression.GetText(mReach) : std::string(); }

    int64_t CountUpTo(const std::string& word, const std::string& column, int64_t most)
    {
        SQLite::Statement row(mDatabase, "SELECT count(*) FROM (SELECT 1 FROM words WHERE words MATCH ?1 LIMIT ?2)");
        row.bind(1, CSearchExpression::TextOf(word, column));
        row.bind(2, most);
        row.executeStep();
        return row.getColumn(0).getInt64();
    }

    /// A statement over the documents that are meant.
    /// @param text      of the full-text index; empty where the query has none
    /// @param joined    the columns are also those of `document` and `figure`
    /// @param lastRow   documents behind it are left out
    SQLite::Statement Prepare(const std::string& columns, const std::string& text, bool joined = false,
                              int64_t limit = kNoLimit, int64_t lastRow = kLastRow)
    {
        constexpr int kFirstParameter = 6;
        std::vector<CSearchExpression::tValue> values;
        const std::string condition = mExpression.GetCondition(kFirstParameter, values);
        const bool hasText = !text.empty();
        joined = joined || !mFolder.empty();
        std::string from = hasText ? "words" : "figure CROSS JOIN document ON document.id = figure.id";
        if (hasText && (joined || !condition.empty())) {
            from += " CROSS JOIN figure ON figure.id = words.rowid";
        }
        if (hasText && joined) {
            from += " CROSS JOIN document ON document.id = words.rowid";
        }
        std::string where = hasText ? "words MATCH ?1" : "TRUE";
        where += hasText && lastRow < kLastRow ? " AND words.rowid <= ?5" : "";
        where += mFolder.empty() ? "" : " AND document.path >= ?2 AND document.path < ?3";
        where += condition.empty() ? "" : " AND " + condition;
        SQLite::Statement row(mDatabase, "SELECT " + columns + " FROM " + from + " WHERE " + where + " LIMIT ?4");
        if (hasText) {
            row.bind(1, text);
        }
        if (!mFolder.empty()) {
            const tPathRange range(mFolder);
            row.bind(2, static_cast<const void*>(range.from.data()), static_cast<int>(range.from.size()));
            row.bind(3, static_cast<const void*>(range.to.data()), static_cast<int>(range.to.size()));
        }
        row.bind(4, limit);
        if (hasText && lastRow < kLastRow) {
            row.bind(5, lastRow);
        }
        int parameter = kFirstParameter;
        for (const CSearchExpression::tValue& value : values) {
            if (value.isText) {
                row.bind(parameter++, value.text);
            } else {
                row.bind(parameter++, value.number);
            }
        }
        return row;
    }

    /// Ranks what is found, leaves out what was found before, and puts it behind that.
    void Rank(const std::string& text, eWordMatch match, int64_t limit, int64_t lastRow = kLastRow)
    {
        const size_t before = mHits.size();
        SQLite::Statement row = Prepare("words.rowid, " + std::string(Ranking::kFunction) + "(words)", text, false,
                                        limit == kNoLimit ? kNoLimit : limit + static_cast<int64_t>(before), lastRow);
        while (row.executeStep()) {
            const int64_t id = row.getColumn(0).getInt64();
            if (mSeen.insert(id).second) {
                mHits.push_back({id, match, row.getColumn(1).getDouble()});
            }
        }
        std::sort(mHits.begin() + static_cast<std::ptrdiff_t>(before), mHits.end(),
                  [](const tHit& a, const tHit& b) { return std::tuple(-a.score, a.id) < std::tuple(-b.score, b.id); });
    }

    /// The best so many, perhaps some more. @param wanted  0 for all
    void FindBest(int64_t wanted)
    {
        const int64_t limit = wanted == 0 ? kNoLimit : std::max(wanted, static_cast<int64_t>(Bounds::kMostRanked));
        const std::string whole = mExpression.GetText(eReach::kWhole);
        if (limit != kNoLimit) {
            RankProminent(whole, limit);
        }
        std::string before;
        for (const eReach reach : {eReach::kWhole, eReach::kBeginnings, eReach::kParts}) {
            if (reach > mReach || (wanted > 0 && static_cast<int64_t>(mHits.size()) >= wanted)) {
                return;
            }
            const std::string text = mExpression.GetText(reach);
            if (text != std::exchange(before, text)) {
                Rank(text, static_cast<eWordMatch>(reach), limit);
            }
        }
    }

    /// Where more match than are ranked, those with every word in a prominent place.
    void RankProminent(const std::string& whole, int64_t limit)
    {
        SQLite::Statement first = Prepare("words.rowid AS row", whole, false, limit + 1);
        int64_t count = 0;
        int64_t last = 0;
        while (first.executeStep()) {
            last = first.getColumn(0).getInt64();
            ++count;
        }
        if (count > limit) {
            const int64_t reach = last < kLastRow / Bounds::kProminentReach ? last * Bounds::kProminentReach : kLastRow;
            Rank(mExpression.GetText(eReach::kWhole, true), eWordMatch::kWhole, limit, reach);
        }
    }

    void FindSorted(eSearchOrder order)
    {
        const std::string text = WidestText();
        SQLite::Statement row = Prepare(std::string("document.id, document.name, document.path, ") +
                                            (order == eSearchOrder::kAuthor ? "document.author" : "NULL") + ", " +
                                            (order == eSearchOrder::kModified ? "-figure.modified" : "0"),
                                        text, true);
        std::vector<std::tuple<int64_t, std::string, std::string, std::string, int64_t>> keys;
        while (row.executeStep()) {
            const std::string author = row.getColumn(3).getString();
            keys.emplace_back(row.getColumn(4).isNull() ? kLastRow : row.getColumn(4).getInt64(),
                              author.empty() && order == eSearchOrder::kAuthor ? "\xFF" : KeyOf(author),
                              KeyOf(row.getColumn(1).getString()), row.getColumn(2).getString(),
                              row.getColumn(0).getInt64());
        }
        std::sort(keys.begin(), keys.end());
        for (const auto& key : keys) {
            mHits.push_back({std::get<4>(key), eWordMatch::kWhole, 0});
        }
    }

    /// By what a text is sorted: its words without capitals and diacritics.
    std::string KeyOf(const std::string& text)
    {
        std::string key;
        for (const tWord& word : Split(text)) {
            key += word.isSpelling ? "" : word.form + " ";
        }
        return key;
    }

    /// @return false for a document that has gone meanwhile
    static bool Read(SQLite::Statement& row, const tHit& hit, CPassageFinder& passages, tFoundDocument& found)
    {
        row.reset();
        row.bind(1, hit.id);
        if (!row.executeStep()) {
            return false;
        }
        passages.Clear();
        for (int i = 0; i < static_cast<int>(std::size(kTextColumns)); ++i) {
            passages.Look(kTextColumns[i], row.getColumn(i).getString());
        }
        found.passage = passages.Take();
        found.path = row.getColumn(kPath).getString();
        found.author = row.getColumn(kAuthor).getString();
        found.description = row.getColumn(kDescription).getString();
        found.revision = row.getColumn(kRevision).getString();
        found.match = hit.match;
        found.score = hit.score;
        found.size = row.getColumn(kSize).getInt64();
        found.modified = NumberOf(row.getColumn(kModified));
        found.created = NumberOf(row.getColumn(kCreated));
        found.elements = NumberOf(row.getColumn(kElements));
        found.tracks = NumberOf(row.getColumn(kTracks));
        const std::string gauges = row.getColumn(kGauges).getString();
        for (size_t at = 0; at < gauges.size();) {
            const size_t end = std::min(gauges.find('\n', at), gauges.size());
            found.gauges.push_back(gauges.substr(at, end - at));
            at = end + 1;
        }
        return true;
    }

    SQLite::Database& mDatabase;
    CSplitter mSplitter;
    std::string mText;
    CQuery mQuery;
    CSearchExpression mExpression;
    eReach mReach;
    std::string mFolder;
    std::vector<tHit> mHits;
    std::unordered_set<int64_t> mSeen;
};

CIndexSearch::CIndexSearch(CIndexDatabase& index, std::string_view query, bool wholeWords)
    : mImpl(std::make_unique<CImpl>(index, query, wholeWords))
{}

CIndexSearch::~CIndexSearch() = default;

const CQuery& CIndexSearch::GetQuery() const
{
    return mImpl->GetQuery();
}

int64_t CIndexSearch::Count(const std::string& folder)
{
    return mImpl->Count(folder);
}

bool CIndexSearch::Find(const tSearchWish& wish, const std::function<bool(const tFoundDocument&)>& use)
{
    return mImpl->Find(wish, use);
}

const std::vector<std::string>& CIndexSearch::GetNotes() const
{
    return mImpl->GetNotes();
}

std::string CIndexSearch::Suggest()
{
    return mImpl->Suggest();
}

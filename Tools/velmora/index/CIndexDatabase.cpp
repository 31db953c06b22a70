#include "index/CIndexDatabase.h"

#include "index/CIndexFile.h"
#include "index/FileSystemName.h"
#include "index/FolderPaths.h"
#include "index/PathRange.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <algorithm>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
std::string Quote(const std::string& path)
{
    return Escapes::ForTerminal(path);
}

void BindBytes(SQLite::Statement& statement, int index, const std::string& bytes)
{
    statement.bindNoCopy(index, static_cast<const void*>(bytes.data()), static_cast<int>(bytes.size()));
}

std::string GetBytes(const SQLite::Column& column)
{
    const auto* bytes = static_cast<const char*>(column.getBlob());
    return bytes == nullptr ? std::string() : std::string(bytes, static_cast<size_t>(column.getBytes()));
}

/// Binds a folder as the parameters 1 (itself), 2 and 3 (what lies below).
void BindRange(SQLite::Statement& row, const std::string& folder, const tPathRange& range)
{
    BindBytes(row, 1, folder);
    BindBytes(row, 2, range.from);
    BindBytes(row, 3, range.to);
}

/// What lies at or below the folder that BindRange bound.
constexpr const char* kInRange = "(path = ?1 OR (path >= ?2 AND path < ?3))";

/// Rows of documents and failures that lie at or below a folder that could not be looked at: from "folder/" on, with
/// the same bytes at the beginning.
constexpr const char* kIsKept = " EXISTS (SELECT 1 FROM kept WHERE p = kept.path OR"
                                " substr(p, 1, length(kept.path) + 1) = CAST(kept.path || x'2F' AS BLOB))";

/// A statement that is compiled at its first use and then kept.
class CKept {
public:
    explicit CKept(const char* text) : mText(text) {}

    SQLite::Statement& Use(SQLite::Database& database)
    {
        if (!mStatement) {
            mStatement.emplace(database, mText);
        }
        mStatement->reset();
        return *mStatement;
    }

private:
    const char* mText;
    std::optional<SQLite::Statement> mStatement;
};
} // namespace

class CIndexDatabase::CImpl {
public:
    CImpl(const std::string& path, eAccess access, const tIndexOpening& opening) : mFile(path, access, opening)
    {
        if (access != eAccess::kRead) {
            // Temporary: who was seen in this run, and where nobody could look. On disk when it gets large.
            Get().exec("CREATE TEMP TABLE seen (id INTEGER PRIMARY KEY);"
                       "CREATE TEMP TABLE kept (path BLOB PRIMARY KEY) WITHOUT ROWID");
            mNewest = Get().execAndGet("SELECT coalesce(max(id), 0) FROM document").getInt64();
        }
    }

    SQLite::Database& Get() { return mFile.GetDatabase(); }
    const CIndexFile& GetFile() const { return mFile; }
    CVocabulary& GetVocabulary() { return mFile.GetVocabulary(); }

    /// The number that a query over what lies at and below a path answers. @param text  with :range, :kept, :newest
    int64_t Count(std::string text, const std::string& path)
    {
        const std::pair<std::string, std::string> names[] = {
            {":range", kInRange}, {":kept", kIsKept}, {":newest", std::to_string(mNewest)}};
        for (const auto& [name, meaning] : names) {
            for (size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + meaning.size())) {
                text.replace(at, name.size(), meaning);
            }
        }
        SQLite::Statement row(Get(), text);
        const tPathRange range(path);
        BindRange(row, path, range);
        int64_t count = 0;
        while (row.executeStep()) {
            count = row.getColumn(0).getInt64();
        }
        return count;
    }

    void Begin()
    {
        if (!mTransaction) {
            mTransaction.emplace(Get(), SQLite::TransactionBehavior::IMMEDIATE);
        }
    }

    void Commit()
    {
        if (mTransaction) {
            mFile.GetVocabulary().Store(Get(), false);
            mTransaction->commit();
            mTransaction.reset();
        }
    }

private:
    CIndexFile mFile;
    int64_t mNewest = 0;
    std::optional<SQLite::Transaction> mTransaction;

public: // behind the connection, so that they go before it
    CKept mFind{"SELECT id, size, modified, inode, hash, importer, failure_code FROM document WHERE path = ?1"};
    CKept mStoreTexts{
        "INSERT INTO document (path, size, modified, inode, hash, importer, indexed, name, author, description,"
        " revision, layer, library, article, text, folder) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12,"
        " ?13, ?14, ?15, ?16) ON CONFLICT (path) DO UPDATE SET size = ?2, modified = ?3, inode = ?4, hash = ?5, "
        "importer = ?6,"
        " indexed = ?7, name = ?8, author = ?9, description = ?10, revision = ?11, layer = ?12, library = ?13,"
        " article = ?14, text = ?15, folder = ?16, failure_code = NULL, failure_message = NULL, failure_time = NULL"
        " RETURNING id"};
    CKept mStoreFailure{
        "INSERT INTO document (path, size, modified, inode, hash, importer, failure_code, failure_message,"
        " failure_time) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9) ON CONFLICT (path) DO UPDATE SET size = ?2,"
        " modified = ?3, inode = ?4, hash = ?5, importer = ?6, failure_code = ?7, failure_message = ?8,"
        " failure_time = ?9 RETURNING id"};
    CKept mStoreStamp{"UPDATE document SET size = ?2, modified = ?3, inode = ?4 WHERE id = ?1"};
    CKept mStoreFigures{"INSERT OR REPLACE INTO figure (id, size, modified, created, elements, tracks)"
                        " VALUES (?1, ?2, ?3, nullif(?4, 0), ?5, ?6)"};
    CKept mRemoveGauges{"DELETE FROM gauge WHERE id = ?1"};
    CKept mStoreGauge{"INSERT OR IGNORE INTO gauge (id, scale, width) VALUES (?1, ?2, ?3)"};
    CKept mStoreModified{"UPDATE figure SET size = ?2, modified = ?3 WHERE id = ?1"};
    CKept mSeen{"INSERT OR IGNORE INTO seen VALUES (?1)"};
};

CIndexDatabase::CIndexDatabase(const std::string& path, eAccess access, tIndexOpening opening) : mPath(path)
{
    try {
        mImpl = std::make_unique<CImpl>(path, access, opening);
    } catch (const SQLite::Exception& error) {
        throw CIndexError(Explain(path, error));
    }
}

CIndexDatabase::~CIndexDatabase() = default;

std::string CIndexDatabase::GetSetAside(std::string& why) const
{
    why = mImpl->GetFile().GetReason();
    return mImpl->GetFile().GetSetAside();
}

std::string CIndexDatabase::Explain(const std::string& path, const std::exception& error)
{
    const auto* const cause = dynamic_cast<const SQLite::Exception*>(&error);
    const int code = cause != nullptr ? cause->getErrorCode() : SQLITE_OK;
    std::string text = "the index " + Quote(path);
    if (code == SQLITE_FULL) {
        return text + " cannot be written: the disk is full. What was committed before is kept";
    }
    text += std::string(" cannot be used: ") + error.what();
    if (code == SQLITE_CANTOPEN || code == SQLITE_IOERR) { // whose cause SQLite does not keep; a disk has it still
        const std::string trial = path + "-trial";
        const std::string reason = CReplacedFile::Write(trial, std::string(4096, ' '), true);
        unlink(trial.c_str());
        text += reason.empty() ? "" : "; a file beside it " + reason;
    }
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB ? text + CIndexFile::kRemedy : text;
}

std::optional<tKnownDocument> CIndexDatabase::Find(const std::string& path)
{
    SQLite::Statement& row = mImpl->mFind.Use(mImpl->Get());
    BindBytes(row, 1, path);
    if (!row.executeStep()) {
        return std::nullopt;
    }
    tKnownDocument known;
    known.id = row.getColumn(0).getInt64();
    known.stamp.size = row.getColumn(1).getInt64();
    known.stamp.modified = row.getColumn(2).getInt64();
    known.stamp.inode = static_cast<uint64_t>(row.getColumn(3).getInt64());
    known.hash = GetBytes(row.getColumn(4));
    known.importer = row.getColumn(5).getString();
    known.failed = !row.getColumn(6).isNull();
    known.failureCode = row.getColumn(6).getString();
    row.reset();
    return known;
}

bool CIndexDatabase::Holds(const std::string& path)
{
    return mImpl->Count("SELECT EXISTS (SELECT 1 FROM document WHERE :range)", path) != 0;
}

static void BindOrigin(SQLite::Statement& row, const tOrigin& origin)
{
    BindBytes(row, 1, origin.path);
    row.bind(2, origin.stamp.size);
    row.bind(3, origin.stamp.modified);
    row.bind(4, static_cast<int64_t>(origin.stamp.inode));
    if (origin.hash.empty()) {
        row.bind(5);
    } else {
        BindBytes(row, 5, origin.hash);
    }
    row.bindNoCopy(6, origin.importer);
}

/// Runs a statement that returns one number. To its end: one that is left before has not happened.
static int64_t StepForID(SQLite::Statement& row)
{
    row.executeStep();
    const int64_t id = row.getColumn(0).getInt64();
    row.executeStep();
    return id;
}

void CIndexDatabase::StoreTexts(const tOrigin& origin, const tIndexedTexts& texts, const tFigures& figures, int64_t now)
{
    mImpl->Begin();
    SQLite::Statement& row = mImpl->mStoreTexts.Use(mImpl->Get());
    BindOrigin(row, origin);
    row.bind(7, now);
    int index = 8;
    for (const std::string* text : {&texts.name, &texts.author, &texts.description, &texts.revision, &texts.layers,
                                    &texts.libraries, &texts.articles, &texts.text, &texts.folder}) {
        row.bindNoCopy(index++, *text);
    }
    const int64_t id = StepForID(row);
    MarkSeen(id);
    SQLite::Statement& numbers = mImpl->mStoreFigures.Use(mImpl->Get());
    numbers.bind(1, id);
    numbers.bind(2, origin.stamp.size);
    numbers.bind(3, origin.modified);
    numbers.bind(4, figures.created);
    numbers.bind(5, figures.elements);
    numbers.bind(6, figures.tracks);
    numbers.exec();
    SQLite::Statement& old = mImpl->mRemoveGauges.Use(mImpl->Get());
    old.bind(1, id);
    old.exec();
    for (const tGauge& gauge : figures.gauges) {
        SQLite::Statement& one = mImpl->mStoreGauge.Use(mImpl->Get());
        one.bind(1, id);
        one.bindNoCopy(2, gauge.scale);
        one.bind(3, gauge.width);
        one.exec();
    }
    mImpl->GetVocabulary().Store(mImpl->Get(), true);
}

void CIndexDatabase::StoreFailure(const tOrigin& origin, const tIndexFailure& failure)
{
    mImpl->Begin();
    SQLite::Statement& row = mImpl->mStoreFailure.Use(mImpl->Get());
    BindOrigin(row, origin);
    row.bindNoCopy(7, failure.code);
    row.bindNoCopy(8, failure.message);
    row.bind(9, failure.time);
    MarkSeen(StepForID(row));
}

void CIndexDatabase::StoreStamp(int64_t id, const tFileStamp& stamp, int64_t modified)
{
    mImpl->Begin();
    SQLite::Statement& row = mImpl->mStoreStamp.Use(mImpl->Get());
    row.bind(1, id);
    row.bind(2, stamp.size);
    row.bind(3, stamp.modified);
    row.bind(4, static_cast<int64_t>(stamp.inode));
    row.exec();
    SQLite::Statement& figures = mImpl->mStoreModified.Use(mImpl->Get());
    figures.bind(1, id);
    figures.bind(2, stamp.size);
    figures.bind(3, modified);
    figures.exec();
}

bool CIndexDatabase::StoreUnreadable(const std::string& path, const tIndexFailure& failure)
{
    mImpl->Begin();
    KeepBelow(path);
    SQLite::Statement before(mImpl->Get(), "SELECT 1 FROM unreadable WHERE path = ?1 AND failure_code = ?2");
    BindBytes(before, 1, path);
    before.bindNoCopy(2, failure.code);
    const bool isNew = !before.executeStep();
    SQLite::Statement row(mImpl->Get(), "INSERT OR REPLACE INTO unreadable VALUES (?1, ?2, ?3, ?4)");
    BindBytes(row, 1, path);
    row.bindNoCopy(2, failure.code);
    row.bindNoCopy(3, failure.message);
    row.bind(4, failure.time);
    row.exec();
    return isNew;
}

/// Runs a statement with a path as its parameter.
static void ExecuteWith(SQLite::Database& database, const char* text, const std::string& path)
{
    SQLite::Statement row(database, text);
    BindBytes(row, 1, path);
    row.exec();
}

void CIndexDatabase::AddRoot(const std::string& path)
{
    mImpl->Begin();
    ExecuteWith(mImpl->Get(), "INSERT OR IGNORE INTO root VALUES (?1)", path);
}

void CIndexDatabase::RemoveRoot(const std::string& path)
{
    mImpl->Begin();
    ExecuteWith(mImpl->Get(), "DELETE FROM root WHERE path = ?1", path);
}

void CIndexDatabase::RemovePlace(const std::string& path)
{
    mImpl->Begin();
    ExecuteWith(mImpl->Get(), "DELETE FROM place WHERE path = ?1", path);
}

void CIndexDatabase::StorePlace(const tPlace& place)
{
    mImpl->Begin();
    SQLite::Statement row(mImpl->Get(), "INSERT OR REPLACE INTO place VALUES (?1, ?2, ?3, ?4)");
    BindBytes(row, 1, place.path);
    row.bindNoCopy(2, place.fileSystem);
    row.bind(3, place.isAbsent ? 1 : 0);
    row.bind(4, place.held);
    row.exec();
}

std::vector<tPlace> CIndexDatabase::GetPlaces()
{
    SQLite::Statement row(mImpl->Get(),
                          "SELECT path, file_system, absent, held, path IN (SELECT path FROM root) FROM place"
                          " UNION ALL SELECT path, '', 0, 0, 1 FROM root WHERE path NOT IN (SELECT path FROM place)"
                          " ORDER BY 1");
    std::vector<tPlace> places;
    while (row.executeStep()) {
        places.push_back({GetBytes(row.getColumn(0)), row.getColumn(1).getString(), row.getColumn(4).getInt() != 0,
                          row.getColumn(2).getInt() != 0, row.getColumn(3).getInt64()});
    }
    return places;
}

bool CIndexDatabase::IsReachable(const std::string& path)
{
    if (!mReach) {
        mReach.emplace();
        for (const tPlace& place : GetPlaces()) {
            const std::string now = FileSystemName::Of(place.path);
            mReach->push_back({place.path, !now.empty(),
                               now == place.fileSystem && !now.empty() && !place.isAbsent && place.held == 0});
        }
    }
    // The innermost place: sorted by path, it is the last one that the path lies in.
    const auto place =
        std::find_if(mReach->rbegin(), mReach->rend(), [&](const tReach& reach) { return LiesIn(path, reach.path); });
    if (place != mReach->rend() && (place->isWhole || !place->isThere)) {
        return place->isWhole;
    }
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0;
}

std::optional<int64_t> CIndexDatabase::Forget(const std::string& path)
{
    mImpl->Begin();
    const tPathRange range(path);
    int64_t changes = 0;
    int64_t documents = 0;
    for (const char* table : {"root", "place", "unreadable", "document"}) {
        SQLite::Statement row(mImpl->Get(), std::string("DELETE FROM ") + table + " WHERE " + kInRange);
        BindRange(row, path, range);
        documents = row.exec();
        changes += documents;
    }
    return changes > 0 ? std::optional(documents) : std::nullopt;
}

void CIndexDatabase::Commit()
{
    mImpl->Commit();
}

void CIndexDatabase::MarkSeen(int64_t id)
{
    SQLite::Statement& row = mImpl->mSeen.Use(mImpl->Get());
    row.bind(1, id);
    row.exec();
}

void CIndexDatabase::KeepBelow(const std::string& path)
{
    SQLite::Statement row(mImpl->Get(), "INSERT OR IGNORE INTO kept VALUES (?1)");
    BindBytes(row, 1, path);
    row.exec();
}

tCensus CIndexDatabase::TakeCensus(const std::string& path)
{
    constexpr const char* kMissing = "FROM (SELECT path AS p, hash FROM document WHERE :range AND id NOT IN (SELECT id"
                                     " FROM seen)) WHERE NOT :kept";
    tCensus census;
    census.missing = mImpl->Count(std::string("SELECT count(*) ") + kMissing, path);
    if (census.missing > 0) { // rarely: nothing else needs the other numbers
        census.known = mImpl->Count("SELECT count(*) FROM document WHERE :range AND id <= :newest", path);
        census.seen = mImpl->Count("SELECT count(*) FROM document WHERE :range AND id IN (SELECT id FROM seen)", path);
        census.lost = mImpl->Count(std::string("SELECT count(*) ") + kMissing +
                                       " AND (hash IS NULL OR hash NOT IN (SELECT hash FROM document WHERE id > :newest"
                                       " AND hash IS NOT NULL))",
                                   path);
    }
    return census;
}

int64_t CIndexDatabase::CountUnseenFailures(const std::string& path)
{
    return mImpl->Count("SELECT count(*) FROM document INDEXED BY document_failed WHERE failure_code IS NOT NULL AND "
                        ":range AND id NOT IN"
                        " (SELECT id FROM seen)",
                        path) +
           mImpl->Count("SELECT count(*) FROM unreadable WHERE :range AND path NOT IN (SELECT path FROM kept)", path);
}

void CIndexDatabase::RemoveUnreadable(const std::string& path, bool all)
{
    if (mImpl->Count("SELECT count(*) FROM unreadable WHERE :range", path) > 0) {
        mImpl->Begin();
        mImpl->Count(all ? "DELETE FROM unreadable WHERE :range"
                         : "DELETE FROM unreadable WHERE path IN (SELECT p FROM (SELECT path AS p FROM unreadable"
                           " WHERE :range) WHERE NOT :kept)",
                     path);
    }
}

int64_t CIndexDatabase::RemoveUnseen(const std::string& root, const std::function<void(const std::string&)>& use)
{
    SQLite::Statement remove(mImpl->Get(), std::string("DELETE FROM document WHERE id IN (SELECT id FROM (SELECT id,"
                                                       " path AS p FROM document WHERE ") +
                                               kInRange + " AND id NOT IN (SELECT id FROM seen)) WHERE NOT" + kIsKept +
                                               ") RETURNING path");
    mImpl->Begin();
    const tPathRange range(root);
    BindRange(remove, root, range);
    int64_t count = 0;
    for (; remove.executeStep(); ++count) {
        if (use) {
            use(GetBytes(remove.getColumn(0)));
        }
    }
    return count;
}

void CIndexDatabase::Optimize()
{
    mImpl->Begin();
    mImpl->Get().exec("INSERT INTO words (words) VALUES ('optimize')");
}

tIndexStatus CIndexDatabase::GetStatus()
{
    SQLite::Database& database = mImpl->Get();
    tIndexStatus status;
    status.version = database.execAndGet("PRAGMA user_version").getInt();
    // What was never read has failed, and the few failures have an index of their own.
    status.documents = database
                           .execAndGet("SELECT (SELECT count(*) FROM document) - (SELECT count(*) FROM document WHERE"
                                       " failure_code IS NOT NULL AND indexed IS NULL)")
                           .getInt64();
    status.failed = database
                        .execAndGet("SELECT (SELECT count(*) FROM document WHERE failure_code IS NOT NULL) +"
                                    " (SELECT count(*) FROM unreadable)")
                        .getInt64();
    status.bytes =
        database.execAndGet("PRAGMA page_count").getInt64() * database.execAndGet("PRAGMA page_size").getInt64();
    SQLite::Statement root(database, "SELECT path FROM root ORDER BY path");
    while (root.executeStep()) {
        status.roots.push_back(GetBytes(root.getColumn(0)));
    }
    return status;
}

void CIndexDatabase::ForEachFailed(const std::function<bool(const tFailedDocument&)>& use)
{
    SQLite::Statement row(mImpl->Get(), "SELECT path, failure_code, failure_message, failure_time, indexed IS NOT NULL,"
                                        " 0 FROM document WHERE failure_code IS NOT NULL UNION ALL"
                                        " SELECT path, failure_code, failure_message, failure_time, 0, 1"
                                        " FROM unreadable ORDER BY 1");
    while (row.executeStep()) {
        tFailedDocument document;
        document.path = GetBytes(row.getColumn(0));
        document.failure.code = row.getColumn(1).getString();
        document.failure.message = row.getColumn(2).getString();
        document.failure.time = row.getColumn(3).getInt64();
        document.searchable = row.getColumn(4).getInt() != 0;
        document.isFolder = row.getColumn(5).getInt() != 0;
        if (!use(document)) {
            return;
        }
    }
}

SQLite::Database& CIndexDatabase::GetConnection()
{
    return mImpl->Get();
}

#include "index/CIndexDatabase.h"

#include "Bounds.h"
#include "index/Schema.h"
#include "index/Tokenizer.h"
#include "output/CReplacedFile.h"
#include "output/Escapes.h"
#include "protocol/CDescriptor.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// How much a match weighs, in the order of the columns of `words`: name, author, description, revision, layer,
/// library, article, text.
constexpr const char* kRank = "bm25(6.0, 4.0, 5.0, 1.0, 3.0, 2.0, 2.0, 1.0)";

constexpr int kPassageWords = 14;

std::string Quote(const std::string& path)
{
    return Escapes::ForTerminal(path);
}

/// SQLite takes a name that begins with "file:" apart, and knows ":memory:".
std::string PlainName(const std::string& path)
{
    return path.starts_with('/') ? path : "./" + path;
}

/// Whether nobody can write to an index, as on a read-only medium. Readers make files beside it, where they can.
bool IsFixed(const std::string& path)
{
    struct stat log = {};
    const std::string folder = PlainName(path).substr(0, PlainName(path).rfind('/') + 1);
    return faccessat(AT_FDCWD, folder.c_str(), W_OK, AT_EACCESS) != 0 &&
           (stat((path + "-wal").c_str(), &log) != 0 || log.st_size == 0); // which may hold more than the file
}

/// A name by which SQLite reads a file that does not change.
std::string FixedName(const std::string& path)
{
    std::string name = "file:";
    for (const char character : PlainName(path)) {
        char escaped[4];
        snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(character));
        name += character == '/' || isalnum(static_cast<unsigned char>(character)) != 0 ? std::string(1, character)
                                                                                        : std::string(escaped);
    }
    return name + "?immutable=1";
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

/// The paths below a folder are those from "folder/" up to, not including, "folder0": '0' follows '/'.
struct tRange {
    explicit tRange(const std::string& folder)
    {
        from = folder.ends_with('/') ? folder : folder + "/";
        to = from.substr(0, from.size() - 1) + "0";
    }
    std::string from;
    std::string to;
};

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
    CImpl(const std::string& path, eAccess access)
    {
        if (access == eAccess::kWrite) {
            TakeLock(path);
            MakeFile(path);
        } else {
            struct stat status = {};
            if (stat(path.c_str(), &status) != 0 && errno == ENOENT) {
                throw CIndexMissing("there is no index " + Quote(path) + " yet: 'velmora index FOLDER' makes it");
            }
        }
        Open(path, access == eAccess::kWrite ? SQLite::OPEN_READWRITE : SQLite::OPEN_READONLY);
        const int version = GetVersion(path);
        if (version < static_cast<int>(Schema::GetSteps().size())) {
            if (access == eAccess::kRead) {
                Open(path, SQLite::OPEN_READWRITE);
            }
            Migrate(path);
        }
        if (access == eAccess::kWrite) {
            // Temporary: who was seen in this run, and where nobody could look. On disk when it gets large.
            mDatabase->exec("CREATE TEMP TABLE seen (id INTEGER PRIMARY KEY);"
                            "CREATE TEMP TABLE kept (path BLOB PRIMARY KEY) WITHOUT ROWID");
        }
    }

    SQLite::Database& Get() { return *mDatabase; }

    void Begin()
    {
        if (!mTransaction) {
            mTransaction.emplace(*mDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        }
    }

    void Commit()
    {
        if (mTransaction) {
            mTransaction->commit();
            mTransaction.reset();
        }
    }

private:
    /// One writer: another one would take for removed what this one has just added.
    void TakeLock(const std::string& path)
    {
        const std::string name = path + "-lock";
        mLock.Reset(open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600));
        if (!mLock.IsOpen()) {
            throw CIndexError("the index " + Quote(path) + " cannot be written: " + strerror(errno));
        }
        if (flock(mLock.Get(), LOCK_EX | LOCK_NB) != 0) {
            throw CIndexError("another run is writing the index " + Quote(path) + "; try again when it has ended");
        }
    }

    /// Texts of documents are their owner's: nobody else may read them. SQLite gives its other files the same mode.
    static void MakeFile(const std::string& path)
    {
        const CDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600));
        if (!file.IsOpen()) {
            throw CIndexError("the index " + Quote(path) + " cannot be written: " + strerror(errno));
        }
    }

    void Open(const std::string& path, int flags)
    {
        const bool isFixed = flags == SQLite::OPEN_READONLY && IsFixed(path);
        mDatabase.emplace(isFixed ? FixedName(path) : PlainName(path),
                          flags | SQLite::OPEN_NOMUTEX /* one thread */ | (isFixed ? SQLite::OPEN_URI : 0),
                          Bounds::kIndexMilliseconds);
        if (!Tokenizer::Register(mDatabase->getHandle())) {
            throw CIndexError("SQLite has no full-text search here");
        }
        // A file is anybody's until shown otherwise: what it holds may be damaged, or made to do harm. Who writes needs
        // the triggers, which may use the full-text index in a trusted schema only.
        sqlite3_db_config(mDatabase->getHandle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(mDatabase->getHandle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, flags == SQLite::OPEN_READWRITE,
                          nullptr);
        mDatabase->exec("PRAGMA cache_size = -32768; PRAGMA secure_delete = OFF; PRAGMA cell_size_check = ON");
    }

    /// The schema's version; 0 for a file without tables.
    int GetVersion(const std::string& path)
    {
        const int application = mDatabase->execAndGet("PRAGMA application_id").getInt();
        const int version = mDatabase->execAndGet("PRAGMA user_version").getInt();
        if (application == 0 && version == 0 &&
            mDatabase->execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0) {
            return 0;
        }
        if (application != Schema::kApplicationID || version < 1) {
            throw CIndexError(Quote(path) + " is a database of another program");
        }
        if (version > static_cast<int>(Schema::GetSteps().size())) {
            throw CIndexError("the index " + Quote(path) + " was made by a newer velmora");
        }
        return version;
    }

    void Migrate(const std::string& path)
    {
        mDatabase->exec("PRAGMA journal_mode = WAL");
        SQLite::Transaction transaction(*mDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        const auto steps = Schema::GetSteps();
        for (size_t i = static_cast<size_t>(GetVersion(path)); i < steps.size();
             ++i) { // another one may have been here
            mDatabase->exec(steps[i]);
        }
        mDatabase->exec("PRAGMA application_id = " + std::to_string(Schema::kApplicationID));
        mDatabase->exec("PRAGMA user_version = " + std::to_string(steps.size()));
        transaction.commit();
    }

    CDescriptor mLock;
    std::optional<SQLite::Database> mDatabase;
    std::optional<SQLite::Transaction> mTransaction;

public: // behind the connection, so that they go before it
    CKept mFind{"SELECT id, size, modified, inode, hash, importer, failure_code FROM document WHERE path = ?1"};
    CKept mStoreTexts{
        "INSERT INTO document (path, size, modified, inode, hash, importer, indexed, name, author, description,"
        " revision, layer, library, article, text) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14,"
        " ?15) ON CONFLICT (path) DO UPDATE SET size = ?2, modified = ?3, inode = ?4, hash = ?5, importer = ?6,"
        " indexed = ?7, name = ?8, author = ?9, description = ?10, revision = ?11, layer = ?12, library = ?13,"
        " article = ?14, text = ?15, failure_code = NULL, failure_message = NULL, failure_time = NULL"
        " RETURNING id"};
    CKept mStoreFailure{
        "INSERT INTO document (path, size, modified, inode, hash, importer, failure_code, failure_message,"
        " failure_time) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9) ON CONFLICT (path) DO UPDATE SET size = ?2,"
        " modified = ?3, inode = ?4, hash = ?5, importer = ?6, failure_code = ?7, failure_message = ?8,"
        " failure_time = ?9 RETURNING id"};
    CKept mStoreStamp{"UPDATE document SET size = ?2, modified = ?3, inode = ?4 WHERE id = ?1"};
    CKept mSeen{"INSERT OR IGNORE INTO seen VALUES (?1)"};
};

CIndexDatabase::CIndexDatabase(const std::string& path, eAccess access) : mPath(path)
{
    try {
        mImpl = std::make_unique<CImpl>(path, access);
    } catch (const SQLite::Exception& error) {
        throw CIndexError(Explain(path, error));
    }
}

CIndexDatabase::~CIndexDatabase() = default;

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
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB ? text + "\nIt is damaged: remove it and index again."
                                                           : text;
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

void CIndexDatabase::StoreTexts(const tOrigin& origin, const tIndexedTexts& texts, int64_t now)
{
    mImpl->Begin();
    SQLite::Statement& row = mImpl->mStoreTexts.Use(mImpl->Get());
    BindOrigin(row, origin);
    row.bind(7, now);
    int index = 8;
    for (const std::string* text : {&texts.name, &texts.author, &texts.description, &texts.revision, &texts.layers,
                                    &texts.libraries, &texts.articles, &texts.text}) {
        row.bindNoCopy(index++, *text);
    }
    MarkSeen(StepForID(row));
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

void CIndexDatabase::StoreStamp(int64_t id, const tFileStamp& stamp)
{
    mImpl->Begin();
    SQLite::Statement& row = mImpl->mStoreStamp.Use(mImpl->Get());
    row.bind(1, id);
    row.bind(2, stamp.size);
    row.bind(3, stamp.modified);
    row.bind(4, static_cast<int64_t>(stamp.inode));
    row.exec();
}

void CIndexDatabase::ForgetOrigins()
{
    mImpl->Begin();
    mImpl->Get().exec("UPDATE document SET importer = '', hash = NULL");
    mImpl->Get().exec("INSERT INTO words (words) VALUES ('rebuild')");
}

void CIndexDatabase::AddRoot(const std::string& path)
{
    mImpl->Begin();
    SQLite::Statement row(mImpl->Get(), "INSERT OR IGNORE INTO root VALUES (?1)");
    BindBytes(row, 1, path);
    row.exec();
}

void CIndexDatabase::RemoveRoot(const std::string& path)
{
    mImpl->Begin();
    SQLite::Statement row(mImpl->Get(), "DELETE FROM root WHERE path = ?1");
    BindBytes(row, 1, path);
    row.exec();
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

int64_t CIndexDatabase::RemoveUnseen(const std::string& root)
{
    // Below a kept folder: from "folder/" on, and the same bytes at the beginning.
    SQLite::Statement remove(mImpl->Get(),
                             "DELETE FROM document WHERE (path = ?1 OR (path >= ?2 AND path < ?3))"
                             " AND id NOT IN (SELECT id FROM seen) AND NOT EXISTS (SELECT 1 FROM kept WHERE"
                             " document.path = kept.path OR substr(document.path, 1, length(kept.path) + 1) ="
                             " CAST(kept.path || x'2F' AS BLOB))");
    mImpl->Begin();
    const tRange range(root);
    BindBytes(remove, 1, root);
    BindBytes(remove, 2, range.from);
    BindBytes(remove, 3, range.to);
    return remove.exec();
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
    status.documents = database.execAndGet("SELECT count(*) FROM document").getInt64();
    status.failed = database.execAndGet("SELECT count(*) FROM document WHERE failure_code IS NOT NULL").getInt64();
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
    SQLite::Statement row(mImpl->Get(), "SELECT path, failure_code, failure_message, failure_time, indexed IS NOT NULL"
                                        " FROM document WHERE failure_code IS NOT NULL ORDER BY path");
    while (row.executeStep()) {
        tFailedDocument document;
        document.path = GetBytes(row.getColumn(0));
        document.failure.code = row.getColumn(1).getString();
        document.failure.message = row.getColumn(2).getString();
        document.failure.time = row.getColumn(3).getInt64();
        document.searchable = row.getColumn(4).getInt() != 0;
        if (!use(document)) {
            return;
        }
    }
}

int64_t CIndexDatabase::Count(const std::string& expression, const std::string& folder)
{
    SQLite::Statement row(mImpl->Get(), folder.empty()
                                            ? "SELECT count(*) FROM words WHERE words MATCH ?1"
                                            : "SELECT count(*) FROM words JOIN document ON document.id = words.rowid"
                                              " WHERE words MATCH ?1 AND path >= ?2 AND path < ?3");
    row.bind(1, expression);
    const tRange range(folder);
    if (!folder.empty()) {
        BindBytes(row, 2, range.from);
        BindBytes(row, 3, range.to);
    }
    row.executeStep();
    return row.getColumn(0).getInt64();
}

void CIndexDatabase::Search(const std::string& expression, const std::string& folder, int64_t limit,
                            const std::function<bool(const tFoundDocument&)>& use)
{
    // The order by rank is the full-text index's own, which computes no passage for what is not asked for.
    std::string text = "SELECT document.path, document.author, document.description,"
                       " snippet(words, -1, ?2, ?3, '…', ?4), rank"
                       " FROM words CROSS JOIN document ON document.id = words.rowid"
                       " WHERE words MATCH ?1 AND rank MATCH ?5";
    text += folder.empty() ? "" : " AND path >= ?7 AND path < ?8";
    SQLite::Statement row(mImpl->Get(), text + " ORDER BY rank LIMIT ?6");
    row.bind(1, expression);
    row.bind(2, std::string(1, kMatchBegin));
    row.bind(3, std::string(1, kMatchEnd));
    row.bind(4, kPassageWords);
    row.bind(5, kRank);
    row.bind(6, limit);
    const tRange range(folder);
    if (!folder.empty()) {
        BindBytes(row, 7, range.from);
        BindBytes(row, 8, range.to);
    }
    while (row.executeStep()) {
        tFoundDocument found;
        found.path = GetBytes(row.getColumn(0));
        found.author = row.getColumn(1).getString();
        found.description = row.getColumn(2).getString();
        found.passage = row.getColumn(3).getString();
        found.score = -row.getColumn(4).getDouble();
        if (!use(found)) {
            return;
        }
    }
}

bool CIndexDatabase::HasWords(std::string_view text)
{
    return !Tokenizer::Split(mImpl->Get().getHandle(), std::string(text)).empty();
}

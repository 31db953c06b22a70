#include "index/CIndexFile.h"

#include "Bounds.h"
#include "Interrupt.h"
#include "Places.h"
#include "index/Ranking.h"
#include "index/Schema.h"
#include "index/Tokenizer.h"
#include "output/Escapes.h"

#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using eAccess = CIndexDatabase::eAccess;

namespace {
/// Of SQLite's machine, between two looks for an interrupt: about a millisecond.
constexpr int kStepsBetweenLooks = 50000;

/// Between two tries to get the writer's lock.
constexpr std::chrono::milliseconds kLockInterval{50};

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

/// No row holds more: it is an answer of a worker (256 MB at most) with a path. SQLite would take a chain of pages in a
/// circle for a text of 1 GB.
constexpr int kLongestRow = 260 << 20;

/// What SQLite may have of memory. Its full-text index would take what a file claims, time and again; a document with a
/// text as long as an answer can be takes nearly seven times that when it is replaced.
constexpr int64_t kMemoryForReading = int64_t{1} << 30;
constexpr int64_t kMemoryForWriting = int64_t{2} << 30;

/// Whether the journal beside an index names a file. SQLite would undo what the journal says, and then remove that
/// file; it makes such journals when several databases change at once, and an index is one.
bool JournalNamesAFile(sqlite3* connection)
{
    static constexpr unsigned char kMagic[] = {0xD9, 0xD5, 0x05, 0xF9, 0x20, 0xA1, 0x63, 0xD7}; // behind the name
    const char* const name = sqlite3_filename_journal(sqlite3_db_filename(connection, "main"));
    const CDescriptor journal(open(name, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat status = {};
    unsigned char end[sizeof kMagic] = {};
    return journal.IsOpen() && fstat(journal.Get(), &status) == 0 &&
           pread(journal.Get(), end, sizeof end, status.st_size - static_cast<off_t>(sizeof end)) == sizeof end &&
           memcmp(end, kMagic, sizeof end) == 0;
}

/// Whether a file may be set aside when it is broken: its header bears the number of our indexes, or it is where the
/// user's own index has its place. Any other file may be somebody's work, whatever was typed behind --database.
bool IsOurs(const std::string& path)
{
    const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    constexpr char kBegin[] = "SQLite format 3"; // with its zero
    constexpr size_t kNumberAt = 68;
    unsigned char header[kNumberAt + 4] = {};
    if (pread(file.Get(), header, sizeof header, 0) == sizeof header && memcmp(header, kBegin, sizeof kBegin) == 0) {
        const uint32_t number = uint32_t{header[kNumberAt]} << 24 | uint32_t{header[kNumberAt + 1]} << 16 |
                                uint32_t{header[kNumberAt + 2]} << 8 | header[kNumberAt + 3];
        if (number == Schema::kApplicationID) {
            return true;
        }
    }
    return path == Places::FindIndex();
}

/// A free name beside a file that says when it was found broken.
std::string NameAside(const std::string& path)
{
    const time_t now = time(nullptr);
    tm parts = {};
    localtime_r(&now, &parts);
    char date[32];
    const std::string name =
        path + ".broken-" + std::string(date, strftime(date, sizeof date, "%Y%m%d-%H%M%S", &parts));
    std::string free = name;
    struct stat status = {};
    for (int i = 2; lstat(free.c_str(), &status) == 0; ++i) {
        free = name + "-" + std::to_string(i);
    }
    return free;
}

/// Texts of documents are their owner's: nobody else may read them. SQLite gives its other files the same mode.
void MakeFile(const std::string& path)
{
    const CDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY, 0600));
    if (!file.IsOpen()) {
        throw CIndexError("the index " + Quote(path) + " cannot be written: " + strerror(errno));
    }
}

/// An index of that version in memory.
SQLite::Database MakeEmpty(int version)
{
    SQLite::Database database(":memory:", SQLite::OPEN_READWRITE);
    Tokenizer::Register(database.getHandle());
    for (int step = 0; step < version; ++step) {
        database.exec(Schema::GetSteps()[static_cast<size_t>(step)]);
    }
    return database;
}

/// All that a file says of its tables, in one text.
std::string DescribeTables(const SQLite::Database& database)
{
    std::string text;
    SQLite::Statement row(database, "SELECT quote(type) || quote(name) || quote(tbl_name) || quote(sql)"
                                    " FROM sqlite_master ORDER BY type, name, sql");
    while (row.executeStep()) {
        text += row.getColumn(0).getString() + "\n";
    }
    return text;
}

bool IsBroken(const SQLite::Exception& error)
{
    return error.getErrorCode() == SQLITE_CORRUPT || error.getErrorCode() == SQLITE_NOTADB;
}
} // namespace

CIndexFile::CIndexFile(const std::string& path, eAccess access, const tIndexOpening& opening)
{
    if (access != eAccess::kRead) {
        TakeLock(path, opening.waitSeconds);
        MakeFile(path);
    }
    try {
        OpenChecked(path, access);
        if (access == eAccess::kRebuild) {
            CountAllAsChanged(path);
        }
    } catch (const CIndexBroken& error) {
        if (access != eAccess::kRebuild) {
            throw;
        }
        mReason = error.what();
        mReason.resize(mReason.size() - std::string_view(kRemedy).size()); // which it is about to follow itself
        Replace(path, opening);
    }
}

void CIndexFile::ThrowBroken(const std::string& path, const std::string& text)
{
    if (IsOurs(path)) {
        throw CIndexBroken(text + kRemedy);
    }
    throw CIndexError(text + ". It is left alone: --database names an index, or a file that is not there yet");
}

/// One writer: another one would take for removed what this one has just added.
void CIndexFile::TakeLock(const std::string& path, double waitSeconds)
{
    const std::string name = path + "-lock";
    mLock.Reset(open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW, 0600));
    if (!mLock.IsOpen()) {
        throw CIndexError("the index " + Quote(path) + " cannot be written: " + strerror(errno));
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(waitSeconds);
    while (flock(mLock.Get(), LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() >= end || Interrupt::IsRequested()) {
            throw CIndexLocked("another run is writing the index " + Quote(path) +
                               "; try again when it has ended, or let --wait SECONDS do so");
        }
        std::this_thread::sleep_for(kLockInterval);
    }
}

/// Opens the file and brings it to today's version, or throws what is wrong with it.
void CIndexFile::OpenChecked(const std::string& path, eAccess access)
{
    const bool isReader = access == eAccess::kRead;
    struct stat status = {};
    const bool isThere = stat(path.c_str(), &status) == 0;
    if (!isThere && errno == ENOENT) {
        throw CIndexMissing("there is no index " + Quote(path) + " yet: 'velmora index FOLDER' makes it");
    }
    if (isThere && !S_ISREG(status.st_mode)) { // opening a pipe would wait for its other end
        throw CIndexError("the index " + Quote(path) + " is no file");
    }
    try {
        Open(path, isReader ? SQLite::OPEN_READONLY : SQLite::OPEN_READWRITE);
        if (GetVersion(path) < static_cast<int>(Schema::GetSteps().size())) {
            if (isReader) {
                Open(path, SQLite::OPEN_READWRITE);
            }
            Migrate(path);
        }
    } catch (const SQLite::Exception& error) {
        if (IsBroken(error)) {
            ThrowBroken(path, "the index " + Quote(path) + " cannot be used: " + error.what());
        }
        throw;
    }
    if (isReader) { // a writer ends at the next document, with all that it has
        sqlite3_progress_handler(
            mDatabase->getHandle(), kStepsBetweenLooks, [](void*) { return Interrupt::IsRequested() ? 1 : 0; },
            nullptr);
    }
    // Who writes needs the triggers, which may use the full-text index in a trusted schema only.
    sqlite3_db_config(mDatabase->getHandle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, !isReader, nullptr);
}

/// Opens the file, of which nothing is believed until GetVersion has looked at it.
void CIndexFile::Open(const std::string& path, int flags)
{
    const bool isFixed = flags == SQLite::OPEN_READONLY && IsFixed(path);
    mDatabase.emplace(isFixed ? FixedName(path) : PlainName(path),
                      flags | SQLite::OPEN_NOMUTEX /* one thread */ | (isFixed ? SQLite::OPEN_URI : 0),
                      Bounds::kIndexMilliseconds);
    const auto take = [this](std::string_view word) { mVocabulary.Take(word); };
    if (!Tokenizer::Register(mDatabase->getHandle(), take) || !Ranking::Register(mDatabase->getHandle())) {
        throw CIndexError("SQLite has no full-text search here");
    }
    sqlite3* const connection = mDatabase->getHandle();
    if (JournalNamesAFile(connection)) {
        ThrowBroken(path, "beside the index " + Quote(path) + " lies a journal that is not its own");
    }
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, kLongestRow);
    sqlite3_hard_heap_limit64(flags == SQLite::OPEN_READWRITE ? kMemoryForWriting : kMemoryForReading);
    mDatabase->exec("PRAGMA cache_size = -32768; PRAGMA secure_delete = OFF; PRAGMA cell_size_check = ON");
}

/// The schema's version, which fits the tables; 0 for a file without tables.
int CIndexFile::GetVersion(const std::string& path)
{
    const int application = mDatabase->execAndGet("PRAGMA application_id").getInt();
    const int version = mDatabase->execAndGet("PRAGMA user_version").getInt();
    if (application == 0 && version == 0 && mDatabase->execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0) {
        return 0;
    }
    if (application != Schema::kApplicationID || version < 1) {
        ThrowBroken(path, Quote(path) + " is a database of another program");
    }
    if (version > static_cast<int>(Schema::GetSteps().size())) {
        ThrowBroken(path, "the index " + Quote(path) + " was made by a newer velmora");
    }
    // Triggers, views and computed columns of a file would do what its maker wants, in the name of our statements.
    if (DescribeTables(*mDatabase) != DescribeTables(MakeEmpty(version))) {
        ThrowBroken(path, "the tables of the index " + Quote(path) + " are not those that velmora makes");
    }
    return version;
}

void CIndexFile::Migrate(const std::string& path)
{
    mDatabase->exec("PRAGMA journal_mode = WAL");
    SQLite::Transaction transaction(*mDatabase, SQLite::TransactionBehavior::IMMEDIATE);
    const auto steps = Schema::GetSteps();
    for (size_t i = static_cast<size_t>(GetVersion(path)); i < steps.size(); ++i) { // another one may have been here
        mDatabase->exec(steps[i]);
    }
    mVocabulary.Store(*mDatabase, false);
    mDatabase->exec("PRAGMA application_id = " + std::to_string(Schema::kApplicationID));
    mDatabase->exec("PRAGMA user_version = " + std::to_string(steps.size()));
    transaction.commit();
}

/// Also the full-text index is made again, of the rows: the pages that hold the rows must be whole for it.
void CIndexFile::CountAllAsChanged(const std::string& path)
{
    try {
        const std::string found = mDatabase->execAndGet("PRAGMA quick_check(1)").getString();
        if (found != "ok") {
            ThrowBroken(path, "the index " + Quote(path) + " is damaged: " + Quote(found));
        }
        SQLite::Transaction transaction(*mDatabase, SQLite::TransactionBehavior::IMMEDIATE);
        mDatabase->exec("UPDATE document SET importer = '', hash = NULL");
        mVocabulary.Clear(*mDatabase);
        mDatabase->exec("INSERT INTO words (words) VALUES ('rebuild')");
        mVocabulary.Store(*mDatabase, false);
        transaction.commit();
    } catch (const SQLite::Exception& error) {
        if (IsBroken(error)) {
            ThrowBroken(path, "the index " + Quote(path) + " is damaged: " + error.what());
        }
        throw;
    }
}

/// What can be read of the roots in a file that is broken, or newer. Nothing is computed on behalf of the file: `root`
/// must be a table, and what it holds absolute paths.
std::vector<std::string> CIndexFile::ReadRoots(const std::string& path)
{
    std::vector<std::string> roots;
    try {
        Open(path, SQLite::OPEN_READONLY);
        if (mDatabase
                ->execAndGet("SELECT count(*) FROM sqlite_master WHERE name = 'root' AND type = 'table' AND"
                             " sql LIKE 'CREATE TABLE %' AND sql NOT LIKE '% AS %'")
                .getInt() == 1) {
            SQLite::Statement row(*mDatabase, "SELECT CAST(path AS BLOB) FROM root LIMIT ?1");
            row.bind(1, static_cast<int64_t>(Bounds::kMostRescuedRoots));
            while (row.executeStep()) {
                const SQLite::Column column = row.getColumn(0);
                const auto* const bytes = static_cast<const char*>(column.getBlob());
                std::string root(bytes != nullptr ? bytes : "", static_cast<size_t>(column.getBytes()));
                if (root.starts_with('/') && root.find('\0') == std::string::npos) {
                    roots.push_back(std::move(root));
                }
            }
        }
    } catch (const std::exception&) { // what was read before counts
    }
    mDatabase.reset();
    return roots;
}

/// Puts an empty index with the old one's roots in the place of a broken file, which is renamed.
void CIndexFile::Replace(const std::string& path, const tIndexOpening& opening)
{
    mDatabase.reset();
    const std::vector<std::string> roots = ReadRoots(path);
    if (roots.empty() && !opening.canLoseRoots) {
        throw CIndexError(mReason + "\nThe folders to be read again cannot be read from it: 'velmora index --rebuild"
                                    " FOLDER...' names them.");
    }
    const std::string aside = NameAside(path);
    for (const char* end : {"", "-wal", "-shm", "-journal"}) {
        if (rename((path + end).c_str(), (aside + end).c_str()) != 0 && (*end == '\0' || errno != ENOENT)) {
            throw CIndexError("the broken index " + Quote(path) + " cannot be set aside: " + strerror(errno));
        }
    }
    mSetAside = aside;
    MakeFile(path);
    OpenChecked(path, eAccess::kRebuild);
    SQLite::Statement row(*mDatabase, "INSERT OR IGNORE INTO root VALUES (?1)");
    for (const std::string& root : roots) {
        row.reset();
        row.bind(1, static_cast<const void*>(root.data()), static_cast<int>(root.size()));
        row.exec();
    }
}

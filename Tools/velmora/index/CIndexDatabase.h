// The index file: one row a document in SQLite, and a full-text index over it.
#pragma once

#include "protocol/Messages.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace SQLite {
class Database;
}

/// What an index cannot do, in words for people; names the file.
class CIndexError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// There is no such file.
class CIndexMissing : public CIndexError {
public:
    using CIndexError::CIndexError;
};

/// It is written by somebody else at the moment.
class CIndexLocked : public CIndexError {
public:
    using CIndexError::CIndexError;
};

/// The file cannot be used, and is ours: it may be set aside. Says by which command.
class CIndexBroken : public CIndexError {
public:
    using CIndexError::CIndexError;
};

/// By what a file is known to be the same as before, without opening it.
struct tFileStamp {
    int64_t size = 0;
    int64_t modified = 0; ///< nanoseconds since 1970; 0 is never trusted
    uint64_t inode = 0;
    bool operator==(const tFileStamp&) const = default;
};

/// Where a document's row comes from.
struct tOrigin {
    std::string path; ///< absolute; any bytes
    tFileStamp stamp;
    std::string hash;     ///< ContentHash of the content; empty when it could not be read
    std::string importer; ///< which importer read it
    int64_t modified = 0; ///< seconds since 1970, also where the stamp does not trust it
};

/// The texts of a document by which it is found. Lists are joined with ", ".
struct tIndexedTexts {
    std::string name; ///< the file's, without folder and extension
    std::string author;
    std::string description;
    std::string revision;
    std::string layers;
    std::string libraries;
    std::string articles;
    std::string text;
    std::string folder = {}; ///< names of the folders above
};

/// Why a document could not be read when it was tried last.
struct tIndexFailure {
    std::string code; ///< as in the records of an import
    std::string message;
    int64_t time = 0; ///< seconds since 1970
};

/// What the index knows of a document.
struct tKnownDocument {
    int64_t id = 0;
    tFileStamp stamp;
    std::string hash;
    std::string importer;
    bool failed = false;     ///< the last attempt
    std::string failureCode; ///< when failed
};

/// One document that failed, or a folder that could not be read.
struct tFailedDocument {
    std::string path;
    tIndexFailure failure;
    bool searchable = false; ///< an earlier state of it is still found
    bool isFolder = false;
};

struct tIndexStatus {
    int version = 0;
    int64_t documents = 0; ///< that can be found
    int64_t failed = 0;    ///< as many as ForEachFailed has
    int64_t bytes = 0;     ///< of the file, without its log
    std::vector<std::string> roots;
};

/// A root, or a mount point of another file system below one: what lies there may be out of reach for a while.
struct tPlace {
    std::string path;
    std::string fileSystem; ///< FileSystemName of it when all was there; empty when that is not known
    bool isRoot = false;
    bool isAbsent = false; ///< at the last run
    int64_t held = 0;      ///< documents when all was there, as long as missing ones are kept; else 0
    bool operator==(const tPlace&) const = default;
};

/// The documents at and below a path, in the middle of a run.
struct tCensus {
    int64_t known = 0;   ///< before the run
    int64_t seen = 0;    ///< in the run, new ones among them
    int64_t missing = 0; ///< not seen, though it could be looked where they were
    int64_t lost = 0;    ///< of the missing: their content is not that of a new document
};

struct tIndexOpening {
    double waitSeconds = 0; ///< for another writer to end
    /// To rebuild: a broken file may be replaced though no roots can be read from it.
    bool canLoseRoots = false;
};

/// A connection to an index file. Errors of the database are thrown as CIndexError (or SQLite's own std::exception).
///
/// There is one writer at a time, known by a lock on a file beside the index; readers see what was committed last.
/// Changes are collected in a transaction that Commit ends; without it they are lost, and the file is as before.
class CIndexDatabase {
public:
    enum class eAccess {
        kRead,
        kWrite,
        kRebuild ///< to write, and every document counts as changed; it is found until it was read again
    };

    /// Opens an index, for writing also makes it. A file of an older version is brought to today's. For kRebuild a
    /// broken one is renamed, with the files beside it, and its roots are taken over.
    CIndexDatabase(const std::string& path, eAccess access, tIndexOpening opening = {});
    ~CIndexDatabase();
    CIndexDatabase(const CIndexDatabase&) = delete;
    CIndexDatabase& operator=(const CIndexDatabase&) = delete;

    /// What an error while an index was used means, for people.
    static std::string Explain(const std::string& path, const std::exception& error);

    const std::string& GetPath() const { return mPath; }

    /// What a broken file was renamed to; empty when it was not. @param why  set to what was wrong
    std::string GetSetAside(std::string& why) const;

    // What is there.
    std::optional<tKnownDocument> Find(const std::string& path);
    /// Whether there is a document at or below a path.
    bool Holds(const std::string& path);
    tIndexStatus GetStatus();
    void ForEachFailed(const std::function<bool(const tFailedDocument&)>& use);

    /// Roots and mount points, sorted by path.
    std::vector<tPlace> GetPlaces();
    /// Whether a document of the index could be opened now, as far as its folder's file system goes. Asks the system
    /// once for each place, and for a document only where something of its place is missing.
    bool IsReachable(const std::string& path);

    // Changes. Each begins a transaction if there is none.
    void StoreTexts(const tOrigin& origin, const tIndexedTexts& texts, const tFigures& figures, int64_t now);
    /// The texts that are there stay, and are found.
    void StoreFailure(const tOrigin& origin, const tIndexFailure& failure);
    /// The content is the same, only the file's stamp is not.
    /// @param modified  as in tOrigin
    void StoreStamp(int64_t id, const tFileStamp& stamp, int64_t modified);
    /// A folder that cannot be read, which may hold what it held. @return whether that is new
    bool StoreUnreadable(const std::string& path, const tIndexFailure& failure);
    void AddRoot(const std::string& path);
    void RemoveRoot(const std::string& path);
    void StorePlace(const tPlace& place);
    void RemovePlace(const std::string& path);
    /// Removes everything at and below a path: roots, places, failures, documents.
    /// @return how many documents; nothing when nothing was known of the path
    std::optional<int64_t> Forget(const std::string& path);
    void Commit();

    // The end of a walk: who has not been seen below a root is gone.
    void MarkSeen(int64_t id);
    /// What lies at or below a path could not be seen.
    void KeepBelow(const std::string& path);
    tCensus TakeCensus(const std::string& path);
    /// How many of the failures at and below a path were not met in this run.
    int64_t CountUnseenFailures(const std::string& path);
    /// Forgets failures of folders at and below a path that have not failed in this run. @param all  have they or not
    void RemoveUnreadable(const std::string& path, bool all);
    /// Removes what lies at or below the root and was not seen. @param use  called for each path @return how many
    int64_t RemoveUnseen(const std::string& root, const std::function<void(const std::string&)>& use);

    /// Merges what many runs have added, so that queries have less to look at.
    void Optimize();

    /// What queries are asked of; the index lives longer than they do.
    SQLite::Database& GetConnection();

private:
    class CImpl;
    /// What is asked of the file system about a place, once.
    struct tReach {
        std::string path;
        bool isThere = false;
        bool isWhole = false;
    };

    std::string mPath;
    std::optional<std::vector<tReach>> mReach; ///< sorted by path
    std::unique_ptr<CImpl> mImpl;
};

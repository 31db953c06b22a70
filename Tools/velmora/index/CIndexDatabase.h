// The index file: one row a document in SQLite, and a full-text index over it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

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

/// One document that failed.
struct tFailedDocument {
    std::string path;
    tIndexFailure failure;
    bool searchable = false; ///< an earlier state of it is still found
};

struct tIndexStatus {
    int version = 0;
    int64_t documents = 0; ///< rows
    int64_t failed = 0;    ///< of them
    int64_t bytes = 0;     ///< of the file, without its log
    std::vector<std::string> roots;
};

/// A found document.
struct tFoundDocument {
    std::string path;
    std::string author;
    std::string description;
    std::string passage; ///< an excerpt; matches between kMatchBegin and kMatchEnd
    double score = 0;    ///< the greater the better
};

/// Around matches in a passage. A document that holds such characters marks more than was found, nothing else.
inline constexpr char kMatchBegin = '\x02';
inline constexpr char kMatchEnd = '\x03';

/// A connection to an index file. Errors of the database are thrown as CIndexError (or SQLite's own std::exception).
///
/// There is one writer at a time, known by a lock on a file beside the index; readers see what was committed last.
/// Changes are collected in a transaction that Commit ends; without it they are lost, and the file is as before.
class CIndexDatabase {
public:
    enum class eAccess { kRead, kWrite };

    /// Opens an index, for writing also makes it. A file of an older version is brought to today's.
    CIndexDatabase(const std::string& path, eAccess access);
    ~CIndexDatabase();
    CIndexDatabase(const CIndexDatabase&) = delete;
    CIndexDatabase& operator=(const CIndexDatabase&) = delete;

    /// What an error while an index was used means, for people.
    static std::string Explain(const std::string& path, const std::exception& error);

    const std::string& GetPath() const { return mPath; }

    // What is there.
    std::optional<tKnownDocument> Find(const std::string& path);
    tIndexStatus GetStatus();
    void ForEachFailed(const std::function<bool(const tFailedDocument&)>& use);

    // Changes. Each begins a transaction if there is none.
    void StoreTexts(const tOrigin& origin, const tIndexedTexts& texts, int64_t now);
    /// The texts that are there stay, and are found.
    void StoreFailure(const tOrigin& origin, const tIndexFailure& failure);
    /// The content is the same, only the file's stamp is not.
    void StoreStamp(int64_t id, const tFileStamp& stamp);
    /// Lets every document count as changed; it is found until it was read again.
    void ForgetOrigins();
    void AddRoot(const std::string& path);
    void RemoveRoot(const std::string& path);
    void Commit();

    // The end of a walk: who has not been seen below a root is gone.
    void MarkSeen(int64_t id);
    /// What lies at or below a path could not be seen.
    void KeepBelow(const std::string& path);
    /// Removes what lies at or below the root and was not seen. @return how many
    int64_t RemoveUnseen(const std::string& root);

    /// Merges what many runs have added, so that queries have less to look at.
    void Optimize();

    // Queries. An expression is of FTS5's language, see CQuery; a folder, if not empty, is where documents must lie.
    int64_t Count(const std::string& expression, const std::string& folder);
    /// Best first. @param limit  how many at most; negative for all @param use  answers false to end
    void Search(const std::string& expression, const std::string& folder, int64_t limit,
                const std::function<bool(const tFoundDocument&)>& use);

    /// Whether there is a letter or digit in a text, as the index sees it.
    bool HasWords(std::string_view text);

private:
    class CImpl;
    std::string mPath;
    std::unique_ptr<CImpl> mImpl;
};

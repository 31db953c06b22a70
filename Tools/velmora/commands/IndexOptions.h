// What the commands around the search index share, and the options of velmora index.
#pragma once

#include "commands/Batch.h"
#include "index/CIndexDatabase.h"

struct tIndexOptions : tBatchOptions {
    std::string format = "text";
    std::string database;            ///< the search index; empty for the user's own
    std::vector<std::string> forget; ///< folders and documents to be dropped
    bool showStatus = false;         ///< what is in it
    bool listFailed = false;         ///< what could not be read
    bool rebuild = false;            ///< read everything again
    bool retryFailed = false;        ///< also what failed and has not changed
    bool verify = false;             ///< compare contents, not times
    bool removeMissing = false;      ///< also most of what a folder holds
    bool newFailures = false;        ///< pass over failures of before
    bool watch = false;              ///< go on until told to end
    unsigned waitSeconds = 0;        ///< for another run to end
};

/// Adds --database. @param database  empty for the user's own
void AddDatabaseOption(CParser& parser, std::string& database);

/// The index that is meant, as an absolute path. @return empty when none is named and there is no place for the user's
std::string GetDatabasePath(const std::string& database);

/// A path without links, "." and "..": as the index knows folders and documents. The last component of a document's
/// path stays as it is; of what does not exist the part that does is resolved.
std::string ResolvePath(const std::string& path);

/// Prints what is in the index. @return an eExitCode
int ShowStatus(CIndexDatabase& index, bool json);

/// Prints what could not be read. @return an eExitCode
int ListFailed(CIndexDatabase& index, bool json);

/// Keeps the index current until a signal ends it. @return an eExitCode
int WatchFolders(const std::string& database, const tIndexOptions& options);

/// Drops what lies at and below the paths, and says how many documents that were. @return an eExitCode
int ForgetPaths(CIndexDatabase& index, const tIndexOptions& options);

// What the commands around the search index share.
#pragma once

#include "commands/CommandLine.h"

/// Adds --database. @param database  empty for the user's own
void AddDatabaseOption(CParser& parser, std::string& database);

/// The index that is meant, as an absolute path. @return empty when none is named and there is no place for the user's
std::string GetDatabasePath(const std::string& database);

/// A path without links, "." and "..": as the index knows folders and documents. The last component of a document's
/// path stays as it is; of what does not exist the part that does is resolved.
std::string ResolvePath(const std::string& path);

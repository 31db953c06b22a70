// What the user owns, as commands read it and hold it against lists of parts.
#pragma once

#include "commands/Batch.h"
#include "commands/Parts.h"

#include <string>

namespace StockBalance {
/// Where the user's stock file is. @param batch  begun with workers that tell its name @return empty for no place
std::string FindUsersFile(const CBatch& batch);

/// Says which counts of a stock file, by a worker's report, are none and taken as 0.
void SayWrongCounts(const std::string& path, const CReport& report);
/// Adds the entries of a stock file to what is owned. A count that is none is taken as 0, and said.
/// @return an eExitCode; what failed has been said
int Read(CBatch& batch, const std::string& path, tAmounts& owned);
/// The same of a report.
void Add(const std::string& path, const CReport& report, tAmounts& owned);

/// Holds what is needed against what is owned, by the core's own operations.
/// @param owned     becomes what is left of it when the needed pieces are taken out
/// @param required  receives what is missing
/// @return an eExitCode; what failed has been said
int Compare(CBatch& batch, const tAmounts& needed, tAmounts& owned, tAmounts& required);
} // namespace StockBalance

namespace KnownLibraries {
/// Asks for the articles of all track libraries that the user has. @param given  on the command line
/// @param lines  where failures become records; null for messages @return an eExitCode
int Read(CBatch& batch, const std::vector<std::string>& given, tArticlesOf& articlesOf, COutput& output,
         CJSONLines* lines);
} // namespace KnownLibraries

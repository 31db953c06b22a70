// The files of the sample libraries, and a stock of their articles.
#pragma once

#include <string>

/// Writes a file for each library into a folder, which need not exist, and tells the registry of libraries.
/// @param folder  its parent must exist
/// @return false when a file was not written
bool MakeLibraries(const std::string& folder);

/// Writes a stock file: what someone has who is building the terminus. The registry must know the track library.
/// @return false when an article is missing or the file was not written
bool MakeStock(const std::string& path);

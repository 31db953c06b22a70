// The track libraries that a user has.
#pragma once

#include <string>
#include <vector>

namespace LibraryFiles {
/// Paths of track libraries, the first of each name: those given, then those that VELMORA_LIBRARIES names (separated by
/// colons), then those in the user's library folder, ${XDG_DATA_HOME:-~/.local/share}/velmora/Libraries. A file that is
/// given is taken whatever it is, so that what is wrong with it is said; in folders those are taken, in the order of
/// their names' bytes, that begin like a library.
std::vector<std::string> Find(const std::vector<std::string>& given);
} // namespace LibraryFiles

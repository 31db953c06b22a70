// Where the host finds its companions and keeps a user's files.
#pragma once

#include <string>

namespace Places {
/// Path of the worker program: beside this executable, or in the library folder. @return empty when there is none
std::string FindWorker();

/// Path of the plug-in bundle. @param named  what the user asked for; empty for the one that belongs to this executable
/// @return empty when none was named and none is found
std::string FindPlugIn(const std::string& named);

/// The folders that FindPlugIn looks into, as one text for people.
std::string DescribePlugInPlaces();

/// The user's data folder of this program, which need not exist: ${XDG_DATA_HOME:-~/.local/share}/velmora; on macOS
/// Library/ Application Support/Velmora. @return empty when there is no place for it
std::string FindDataFolder();

/// The user's search index, in the data folder, which need not exist. @return empty when there is no place for it
std::string FindIndex();

/// The user's stock file, which need not exist: as the core finds it for the application, whose data folder on Linux
/// is ${XDG_DATA_HOME:-~/.local/share}/Velmora. @param name  what the preferences call it @return empty when there is
/// no place for it
std::string FindStock(const std::string& name);

/// Makes the folder a file is to lie in, and those above it, for this user alone. Who needs it sees when it is missing.
void MakeFolderOf(const std::string& path);

/// The file in which the core keeps the user's preferences, which need not exist. @return empty when there is no place
/// for it
std::string FindPreferencesFile();

/// The user's configuration of this program, which need not exist: ${XDG_CONFIG_HOME:-~/.config}/velmora/config.
/// @return empty when there is no place for it
std::string FindConfiguration();

/// Makes the folder of the error log, ${XDG_STATE_HOME:-~/.local/state}/velmora with mode 0700. Workers append to a log
/// there but do not make folders. A failure has no consequence but that nothing is logged.
void MakeLogFolder();
} // namespace Places

// What the system says about itself and where it keeps a user's files.
#pragma once

#include "Platform/Export.h"

#include <string>

namespace Platform {
/// System version packed as hexadecimal digits (0x1015 for 10.15; on Linux the kernel's: 0x0612 for 6.12).
/// 0 when unknown.
PLATFORM_EXPORT int SystemVersion();

/// Clock speed of the first processor in Hz, at most 2^31 - 1 (2.147 GHz, the most an int holds); 0 when unknown.
PLATFORM_EXPORT int ProcessorSpeed();

/// The machine's name as its user knows it; empty when unknown.
PLATFORM_EXPORT std::string MachineName();

/// Number and model of the processors in one line; empty when unknown.
PLATFORM_EXPORT std::string ProcessorDescription();

/// Name of the running program; empty when unknown.
PLATFORM_EXPORT std::string ProcessName();

enum class eFolder {
    kLogs,              ///< macOS Library/Logs; Linux ${XDG_STATE_HOME:-~/.local/state}/velmora
    kApplicationSupport ///< macOS Library/Application Support; Linux ${XDG_DATA_HOME:-~/.local/share}
};

/// Path of one of the user's folders, without a separator at its end.
/// @param create  make it (with its parents, mode 0700) where it is missing
/// @return empty when there is no such folder and it was not or could not be made
PLATFORM_EXPORT std::string FolderPath(eFolder folder, bool create);
} // namespace Platform

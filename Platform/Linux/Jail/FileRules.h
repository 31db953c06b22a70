// Landlock: what a process may do with files, TCP, abstract sockets and signals. What is not granted is refused.
#pragma once

#include <string>
#include <vector>

namespace Jail {
/// The version of the kernel's interface; 0 where there is none.
int GetFileRulesVersion();

/// The first version of the interface that knows TCP.
inline constexpr int kTCPVersion = 4;
/// The first version of the interface that knows abstract sockets and signals.
inline constexpr int kScopesVersion = 6;

/// Binds the calling thread and those that it starts. It cannot be taken back.
/// @param readableFolders  files in and below them may be read; all else is refused
/// @param detail           set to how far it reaches, or why it failed
bool RestrictFiles(const std::vector<std::string>& readableFolders, std::string& detail);
} // namespace Jail

// What names of files tell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace DocumentNames {
/// Whether a name has something in front of ".velmora", in either case.
bool HasExtension(std::string_view name);

/// A name, or a path, without the ".velmora" at its end, if it has one.
std::string WithoutExtension(std::string name);

/// The last component of a path.
std::string NameOfFile(const std::string& path);

/// Whether one of the shell's patterns matches the name, or the whole path if the pattern holds a slash.
bool IsExcluded(const std::vector<std::string>& patterns, const std::string& name, const std::string& path);
} // namespace DocumentNames

// What to do about a shared library that is not there.
#pragma once

#include <string>

namespace MissingLibrary {
/// The end of a message in which the dynamic loader names a library that it does not find: the package to install, as
/// the file beside the worker tells ("SONAME PACKAGE" a line), or the library's name where it does not.
/// @param worker  path of the worker's program
/// @return empty for other messages
std::string NameRemedy(const std::string& message, const std::string& worker);
} // namespace MissingLibrary

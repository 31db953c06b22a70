// A result that goes to a file of its own.
#pragma once

#include <string>
#include <string_view>

/// Writes files as a whole or not at all.
class CReplacedFile {
public:
    CReplacedFile() = delete;

    /// Whether a regular file is there under that name, or behind the link of that name.
    static bool IsRegular(const std::string& path);

    /// Writes beside the file, syncs, and puts the result in its place; what is not a regular file (a device, a pipe)
    /// is written to as it is.
    /// @param mayReplace  a file that is there already may go
    /// @return empty, or why it could not be written; the file is then as it was
    static std::string Write(const std::string& path, std::string_view bytes, bool mayReplace);
};

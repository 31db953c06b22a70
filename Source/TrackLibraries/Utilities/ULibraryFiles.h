// The names of track libraries.
#pragma once

#include <string>

/// Tells names of library files. Which files there are is the host's to find.
class ULibraryFiles {
public:
    ULibraryFiles() = delete;

    /// The name by which elements refer to the library at a path (bytes of the file system): its last component. One
    /// that is UTF-8 is composed, since file systems and archives may have letters and marks apart, and converted to
    /// Mac OS Roman, the set of names inside documents; what that set does not hold stays UTF-8.
    static std::string GetLibraryName(const std::string& path);
};

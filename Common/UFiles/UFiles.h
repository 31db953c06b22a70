// Files and folders by reference.
#pragma once

#include "Platform/FileReference.h"

#include <cstdio>
#include <string>

/// Operations on file references. References are outputs only where the function succeeds.
class UFiles {
public:
    /// The file's name in Mac OS Roman, cut to `size` bytes with its zero; a name outside that character set comes as
    /// its bytes are. Empty for an empty reference.
    static void GetFileName(char* name, int size, const FSRef& file);

    /// The path into `path` of `size` bytes; bytes of the file system.
    /// @param message  left as it is: the reason of a failure goes to the report observer only
    /// @return 0, or the File Manager's code (Platform/FileReference.h)
    static OSStatus GetFullPathToFile(char* path, int size, const FSRef& file, std::string& message);

    /// @param mode  as for fopen
    /// @return a stream that the caller closes; null on any failure
    static FILE* OpenFSRefAsFileHandle(const FSRef* file, const char* mode);

    /// The application's own folder, named like its bundle, among the user's application data;
    /// made where it is missing.
    static bool GetUserApplicationSupportFolder(FSRef& folder);

    /// Finds or makes the folder `name` (UTF-8) in another. @return false when there is no such folder at the end
    static bool GetCreateFolder(const FSRef* parent, const char* name, FSRef* result);
    static bool GetCreateFolder(const char* parentPath, const char* name, FSRef* result);
};

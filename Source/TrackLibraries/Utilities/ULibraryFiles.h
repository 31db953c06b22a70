// Where the files of track libraries lie.
#pragma once

#include <string>
#include <vector>

/// Finds library files and tells their names. Paths are bytes of the file system.
class ULibraryFiles {
public:
    ULibraryFiles() = delete;

    /// The name by which elements refer to the library at a path: its last component. Names inside documents are Mac OS
    /// Roman, so one that is UTF-8 is converted; what that set does not hold stays as its bytes are.
    static std::string GetLibraryName(const std::string& path);

    /// The user's own folder of libraries, in the application-support folder; it need not exist. Empty when there is no
    /// application-support folder.
    static std::string GetUserFolder();

    /// Whether the path leads to a regular file that begins with a library's magic.
    static bool IsLibraryFile(const std::string& path);

    /// Collects library files for CRailsetFolder::InitializeWithPaths. Since the first of several libraries of the same
    /// name counts there, the places come in this order: the given paths, those of the environment variable
    /// VELMORA_LIBRARIES (separated by colons), the user's folder.
    ///
    /// Each path is a file or a folder; of a folder those files are taken, at any depth and in the order of their
    /// paths' bytes, that IsLibraryFile accepts. Hidden files and folders (there are libraries among them while they
    /// are being saved) and links to folders are passed over. Each file comes once, however many paths lead to it; a
    /// link is a library of its own, named as the link.
    /// @param rejected  if not null, the given paths are appended to it that are neither library nor readable folder
    static std::vector<std::string> Collect(const std::vector<std::string>& paths,
                                            std::vector<std::string>* rejected = nullptr);
};

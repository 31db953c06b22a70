// Helpers for paths held as C strings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Paths with "/" between their components, in any encoding that keeps ASCII. A `size` counts the bytes of the buffer
/// with the terminating zero: what does not fit is not appended. Without it the caller vouches for the room.
class KVUPath {
public:
    static constexpr size_t kUnbounded = SIZE_MAX;

    /// Appends "." and the suffix unless the text after the last "." is the suffix.
    /// @param checkOnly  leave the path alone
    /// @return true when the suffix was missing; false also where it did not fit
    static bool CheckAppendFileSuffix(char* path, const char* suffix, bool checkOnly, size_t size = kUnbounded);

    /// What stands behind the last "/", or everything.
    static std::string GetLastPathComponent(const std::string& path);

    /// Replaces a leading "~" or "~user" by the home folder. Shell patterns are expanded, too, to their first match.
    /// The path stays as it is where nothing matches or the result needs `size` - 1 bytes or more.
    /// A null path is fatal.
    static void CreatePathByExpandingTildePath(char* path, int size);

    /// False for null and empty paths.
    static bool IsAbsolutePath(const char* path);

    /// Appends "/" unless it is there. An empty path stays empty.
    static void SetPathEndToSeparator(char* path, size_t size = kUnbounded);
};

// Files that fail: an action runs in a process of its own, and one of its calls about the files of a folder goes wrong.
#pragma once

#include <functional>
#include <string>

/// What goes wrong, and when. The system refuses the call, so that it does not matter who makes it: the C library's
/// streams and SQLite do so out of sight.
struct tFault {
    enum class eCalls {
        kRead, ///< all that read from an open file
        kWrite ///< all that change a file, a name or what the disk holds; and the closing
    };
    enum class eHow {
        kNone,   ///< only counted
        kOnce,   ///< the call fails with the error
        kOnward, ///< it and all behind it
        kShort,  ///< it does half of what it should; further ones fail if they write, or are short as well if they read
        kCut     ///< before it half of the file is cut off
    };
    eCalls calls = eCalls::kWrite;
    eHow how = eHow::kNone;
    int at = 1; ///< number of the call, from 1
    int error = 0;
};

struct tFaultyRun {
    int status = -1; ///< of its exit; 128 and the number of a signal that has ended it; -1: not run, the system cannot
    int calls = 0;   ///< those that count, failed ones too
};

/// @param folder  its files fail, and those below; a real path
/// @param action  runs in a child, whose status is its result; may start programs, whose calls fail as well
tFaultyRun RunWithFault(const std::string& folder, const tFault& fault, const std::function<int()>& action);

// What the process answers to its caller; docs/cli.md has the same list.
#pragma once

enum eExitCode : int {
    kExitOK = 0,           ///< all inputs went well
    kExitFailed = 1,       ///< some input failed; the others were done and printed
    kExitUsage = 2,        ///< wrong usage; nothing was done
    kExitLocked = 3,       ///< another run is writing the index; nothing was done
    kExitInterrupted = 130 ///< ended by the user; what was finished is printed
};

// The command-line host. It opens documents and talks to the user; what is inside documents is the workers' business.
#include "ExitCodes.h"
#include "commands/CommandLine.h"

#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <unistd.h>

/// A descriptor that the caller has closed would be given to the next file opened, and data written into it. Opened for
/// reading only, so that writing to a closed stdout is still seen to fail.
static void OccupyStandardDescriptors()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            [[maybe_unused]] const int opened = open("/dev/null", O_RDONLY);
        }
    }
}

int main(int argc, char** argv)
{
    OccupyStandardDescriptors();
    try {
        return RunCommandLine(argc, argv);
    } catch (const std::exception& error) { // no memory, above all
        fprintf(stderr, "velmora: %s\n", error.what());
        return kExitFailed;
    }
}

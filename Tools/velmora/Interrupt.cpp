#include "Interrupt.h"

#include "ExitCodes.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

static volatile sig_atomic_t sRequested = 0;
static int sPipe[2] = {-1, -1};

static void HandleInterrupt(int number)
{
    if (sRequested != 0) {
        _exit(kExitInterrupted);
    }
    sRequested = number;
    const int savedError = errno;
    [[maybe_unused]] const ssize_t written = write(sPipe[1], "", 1);
    errno = savedError;
}

static bool MakePipe()
{
    if (sPipe[0] < 0) {
        if (pipe(sPipe) != 0) {
            return false;
        }
        fcntl(sPipe[0], F_SETFD, FD_CLOEXEC);
        fcntl(sPipe[1], F_SETFD, FD_CLOEXEC);
    }
    return true;
}

static void Catch(int number)
{
    struct sigaction action = {};
    action.sa_handler = HandleInterrupt; // without SA_RESTART: a read from a terminal or pipe ends, too
    sigaction(number, &action, nullptr);
}

void Interrupt::Install()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    struct sigaction old = {};
    if (sigaction(SIGINT, nullptr, &old) == 0 && old.sa_handler == SIG_DFL && MakePipe()) {
        Catch(SIGINT);
    }
}

void Interrupt::InstallForService()
{
    if (MakePipe()) {
        Catch(SIGTERM);
    }
}

bool Interrupt::IsTermination()
{
    return sRequested == SIGTERM;
}

bool Interrupt::IsRequested()
{
    return sRequested != 0;
}

int Interrupt::GetDescriptor()
{
    return sPipe[0];
}

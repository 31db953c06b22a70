#include "Interrupt.h"

#include "ExitCodes.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

static volatile sig_atomic_t sRequested = 0;
static int sPipe[2] = {-1, -1};

static void HandleInterrupt(int)
{
    if (sRequested != 0) {
        _exit(kExitInterrupted);
    }
    sRequested = 1;
    const int savedError = errno;
    [[maybe_unused]] const ssize_t written = write(sPipe[1], "", 1);
    errno = savedError;
}

void Interrupt::Install()
{
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
    struct sigaction old = {};
    if (sPipe[0] >= 0 || sigaction(SIGINT, nullptr, &old) != 0 || old.sa_handler == SIG_IGN || pipe(sPipe) != 0) {
        return;
    }
    fcntl(sPipe[0], F_SETFD, FD_CLOEXEC);
    fcntl(sPipe[1], F_SETFD, FD_CLOEXEC);
    struct sigaction action = {};
    action.sa_handler = HandleInterrupt; // without SA_RESTART: a read from a terminal or pipe ends, too
    sigaction(SIGINT, &action, nullptr);
}

bool Interrupt::IsRequested()
{
    return sRequested != 0;
}

int Interrupt::GetDescriptor()
{
    return sPipe[0];
}

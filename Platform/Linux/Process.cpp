#include "Platform/Process.h"

#include <csignal>
#include <malloc.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {
/// Free memory at the heap's end that is kept, bytes; far below what a worker may use.
constexpr int kKeptMemory = 32 << 20;
} // namespace

void Platform::EndWithParent()
{
    const pid_t parent = getppid();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) { // it died in between
        raise(SIGKILL);
    }
}

void Platform::KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, kKeptMemory);
    mallopt(M_ARENA_MAX, 1);
}

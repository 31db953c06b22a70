#include "Platform/Process.h"

#include <csignal>
#include <cstdlib>
#include <dirent.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

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

void Platform::CloseDescriptorsFrom(int first)
{
#if defined(SYS_close_range)
    if (syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, 0) == 0) {
        return;
    }
#endif
    // Older kernels, and containers that refuse what they do not know.
    std::vector<int> open;
    if (DIR* const folder = opendir("/proc/self/fd")) {
        while (const dirent* const entry = readdir(folder)) {
            const int descriptor = entry->d_name[0] != '.' ? atoi(entry->d_name) : -1;
            if (descriptor >= first && descriptor != dirfd(folder)) {
                open.push_back(descriptor);
            }
        }
        closedir(folder);
    }
    for (const int descriptor : open) {
        close(descriptor);
    }
}

void Platform::KeepFreedMemory()
{
    mallopt(M_TRIM_THRESHOLD, kKeptMemory);
    mallopt(M_ARENA_MAX, 1);
}

#include "Limits.h"

#include "protocol/Frames.h"

#include <csignal>
#include <cstdio>
#include <new>
#include <sys/resource.h>
#include <unistd.h>
#if defined(__linux__)
#include <malloc.h>
#include <sys/prctl.h>
#endif

#if defined(__SANITIZE_ADDRESS__)
#define VELMORA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMORA_ADDRESS_SANITIZER 1
#endif
#endif

static int sSocket = -1;
static uint32_t sSequence = 0;

/// Sending needs no memory: the frame has no payload.
[[noreturn]] static void HandleOutOfMemory()
{
    SendFrame(sSocket, eFrameKind::kOutOfMemory, sSequence, {});
    _exit(1);
}

void Limits::Begin(int socket)
{
    sSocket = socket;
#if defined(__linux__)
    // An arena per thread would each map 64 MB.
    mallopt(M_ARENA_MAX, 1);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::set_new_handler(HandleOutOfMemory);
}

void Limits::GrantMemory([[maybe_unused]] size_t megabytes)
{
#if defined(__linux__) && !defined(VELMORA_ADDRESS_SANITIZER)
    unsigned long pages = 0;
    if (FILE* status = fopen("/proc/self/statm", "re")) {
        if (fscanf(status, "%lu", &pages) != 1) {
            pages = 0;
        }
        fclose(status);
    }
    if (pages > 0) {
        const rlim_t limit = rlim_t{pages} * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (rlim_t{megabytes} << 20);
        const rlimit both = {limit, limit};
        setrlimit(RLIMIT_AS, &both);
    }
#endif
}

void Limits::SetSequence(uint32_t sequence)
{
    sSequence = sequence;
}

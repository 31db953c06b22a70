#include "Limits.h"

#include "Platform/Process.h"
#include "protocol/Frames.h"

#include <cstdio>
#include <new>
#include <sys/resource.h>
#include <unistd.h>

static int sSocket = -1;
static uint32_t sSequence = 0;

void Limits::HandleOutOfMemory()
{
    // Sending needs no memory: the frame has no payload.
    SendFrame(sSocket, eFrameKind::kOutOfMemory, sSequence, {});
    _exit(1);
}

void Limits::Begin(int socket)
{
    sSocket = socket;
    Platform::EndWithParent();
    Platform::KeepFreedMemory();
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::set_new_handler(Limits::HandleOutOfMemory);
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

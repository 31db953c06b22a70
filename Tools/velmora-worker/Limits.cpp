#include "Limits.h"

#include "Platform/Process.h"
#include "protocol/Frames.h"

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
    Platform::CloseDescriptorsFrom(socket + 1); // what the host's caller has left open is not ours
    Platform::KeepFreedMemory();
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    std::set_new_handler(Limits::HandleOutOfMemory);
}

void Limits::SetSequence(uint32_t sequence)
{
    sSequence = sequence;
}

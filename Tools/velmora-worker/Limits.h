// What ends a worker, and what it says before.
#pragma once

#include <cstdint>

namespace Limits {
/// First thing in a worker: it ends with its host, leaves no core files, and says so when memory runs out.
/// @param socket  where the message about exhausted memory goes; not owned
void Begin(int socket);

/// Tells the host that memory has run out, and ends the process.
[[noreturn]] void HandleOutOfMemory();

/// Names the request at hand in messages sent by Begin's handlers. @param sequence  its number
void SetSequence(uint32_t sequence);
} // namespace Limits

// What a worker may not exceed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Limits {
/// First thing in a worker: it ends with the host, leaves no core files, and says so when memory runs out.
/// @param socket  where the message about exhausted memory goes; not owned
void Begin(int socket);

/// Grants memory beyond what is mapped now. Without effect under AddressSanitizer, which maps terabytes.
void GrantMemory(size_t megabytes);

/// Names the request at hand in messages sent by Begin's handlers. @param sequence  its number
void SetSequence(uint32_t sequence);
} // namespace Limits

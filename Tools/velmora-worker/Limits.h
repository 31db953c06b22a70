// What a worker may not exceed.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__SANITIZE_ADDRESS__)
#define VELMORA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMORA_ADDRESS_SANITIZER 1
#endif
#endif

namespace Limits {
/// First thing in a worker: it leaves no core files, and says so when memory runs out.
/// @param socket  where the message about exhausted memory goes; not owned
void Begin(int socket);

/// Grants memory beyond what is mapped now. Without effect under AddressSanitizer, which maps terabytes.
void GrantMemory(size_t megabytes);

/// Tells the host that memory has run out, and ends the process.
[[noreturn]] void HandleOutOfMemory();

/// Names the request at hand in messages sent by Begin's handlers. @param sequence  its number
void SetSequence(uint32_t sequence);
} // namespace Limits

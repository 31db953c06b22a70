// Whether this is a build with AddressSanitizer. It maps terabytes of address space, stands in for the allocator and
// looks for leaks in ways that no sandbox allows.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define VELMORA_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMORA_ADDRESS_SANITIZER 1
#endif
#endif

// Telling exhausted memory from a crash. Foundation and the C libraries do not go through the new-handler: they raise,
// abort or read through a null pointer. So the worker sees every allocation of the C library that fails, by standing in
// front of it.
#include "Limits.h"
#include "Sanitizer.h"

#include <cstddef>

#if defined(__GLIBC__) && !defined(VELMORA_ADDRESS_SANITIZER)

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

__attribute__((visibility("default"))) void* malloc(size_t size) noexcept
{
    void* const block = __libc_malloc(size);
    if (block == nullptr) {
        Limits::HandleOutOfMemory();
    }
    return block;
}

__attribute__((visibility("default"))) void* calloc(size_t count, size_t size) noexcept
{
    void* const block = __libc_calloc(count, size);
    if (block == nullptr) {
        Limits::HandleOutOfMemory();
    }
    return block;
}

__attribute__((visibility("default"))) void* realloc(void* old, size_t size) noexcept
{
    void* const block = __libc_realloc(old, size);
    if (block == nullptr && size > 0) { // a size of 0 frees
        Limits::HandleOutOfMemory();
    }
    return block;
}
}

#endif

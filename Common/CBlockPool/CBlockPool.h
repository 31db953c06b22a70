// Memory for the many objects of a few sizes that make up a layout.
#pragma once

#include <cstddef>
#include <new>

/// Hands out blocks one behind the other from large chunks and takes them back onto a list for their size. A layout is
/// loaded and destroyed as a whole: with the last block given back everything starts over at the first chunk, so that
/// the next load meets its memory in order again, and touched already. One thread only, like the documents themselves.
class CBlockPool {
public:
    CBlockPool() = delete;

    /// Blocks above this size come from the system's heap.
    static constexpr size_t kLargestBlock = 768;

    /// @return memory of that size, aligned for every type; the caller gives it back with Release. Throws
    /// std::bad_alloc, after the new-handler has been asked, when there is none.
    static void* Allocate(size_t size);
    /// The same, but null when there is none.
    static void* Allocate(size_t size, const std::nothrow_t&) noexcept;
    /// @param size  what Allocate was asked for; a null block is passed over
    static void Release(void* block, size_t size) noexcept;
};

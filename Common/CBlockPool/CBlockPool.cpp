#include "CBlockPool/CBlockPool.h"

#include <iterator>
#include <vector>

namespace {
// A sanitizer watches blocks of the heap, not parts of a chunk.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPools = false;
#elif defined(__has_feature)
constexpr bool kPools = !__has_feature(address_sanitizer);
#else
constexpr bool kPools = true;
#endif

constexpr size_t kStep = alignof(std::max_align_t);
constexpr size_t kChunkSize = 64 << 10;
/// Chunks that stay when nothing is in use; a layout of some 17,000 elements.
constexpr size_t kKeptChunks = 256;

/// Lies in a block that is not in use.
struct tFreeBlock {
    tFreeBlock* next;
};

struct tPool {
    tFreeBlock* free[CBlockPool::kLargestBlock / kStep + 1] = {}; ///< by size in steps
    std::vector<char*> chunks;
    size_t nextChunk = 0; ///< those before it are in use
    char* at = nullptr;   ///< where the current one goes on
    char* end = nullptr;
    size_t used = 0; ///< blocks handed out
};

tPool sPool;

constexpr size_t StepsOf(size_t size)
{
    return (size + kStep - 1) / kStep;
}

void StartNextChunk()
{
    if (sPool.nextChunk == sPool.chunks.size()) {
        sPool.chunks.reserve(sPool.chunks.size() + 1);
        sPool.chunks.push_back(static_cast<char*>(::operator new(kChunkSize)));
    }
    sPool.at = sPool.chunks[sPool.nextChunk++];
    sPool.end = sPool.at + kChunkSize;
}

void StartOver() noexcept
{
    for (tFreeBlock*& list : sPool.free) {
        list = nullptr;
    }
    while (sPool.chunks.size() > kKeptChunks) {
        ::operator delete(sPool.chunks.back());
        sPool.chunks.pop_back();
    }
    sPool.nextChunk = 0;
    sPool.at = sPool.end = nullptr;
}
} // namespace

void* CBlockPool::Allocate(size_t size)
{
    const size_t steps = StepsOf(size);
    if (kPools && steps < std::size(sPool.free)) {
        if (tFreeBlock* block = sPool.free[steps]) {
            sPool.free[steps] = block->next;
            ++sPool.used;
            return block;
        }
        if (static_cast<size_t>(sPool.end - sPool.at) < steps * kStep) {
            StartNextChunk();
        }
        void* block = sPool.at;
        sPool.at += steps * kStep;
        ++sPool.used;
        return block;
    }
    return ::operator new(size);
}

void CBlockPool::Release(void* block, size_t size) noexcept
{
    if (block == nullptr) {
        return;
    }
    const size_t steps = StepsOf(size);
    if (kPools && steps < std::size(sPool.free)) {
        sPool.free[steps] = new (block) tFreeBlock{sPool.free[steps]};
        if (--sPool.used == 0) {
            StartOver();
        }
        return;
    }
    ::operator delete(block);
}

void* CBlockPool::Allocate(size_t size, const std::nothrow_t&) noexcept
{
    try {
        return Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

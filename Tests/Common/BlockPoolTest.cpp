#include "CBlockPool/CBlockPool.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

namespace {
struct tBlock {
    unsigned char* bytes;
    size_t size;
    unsigned char mark;
};
} // namespace

// Blocks of all sizes come and go in random order, now and then all of them; none may reach into another.
TEST(BlockPool, BlocksAreAlignedAndDoNotOverlap)
{
    CRandom random(7);
    std::vector<tBlock> blocks;
    const auto release = [&blocks] {
        const auto [bytes, size, mark] = blocks.back();
        EXPECT_EQ(std::count(bytes, bytes + size, mark), static_cast<std::ptrdiff_t>(size)) << "untouched";
        CBlockPool::Release(bytes, size);
        blocks.pop_back();
    };
    for (int step = 0; step < 60000; ++step) {
        const size_t most = step % 20000 < 12000 ? 4000 : 0; // grows, then empties
        if (blocks.size() < most && random() % 4 != 0) {
            const size_t size = 1 + random() % (CBlockPool::kLargestBlock + 40);
            tBlock block = {static_cast<unsigned char*>(CBlockPool::Allocate(size)), size,
                            static_cast<unsigned char>(random())};
            ASSERT_EQ(reinterpret_cast<uintptr_t>(block.bytes) % alignof(std::max_align_t), 0u);
            std::memset(block.bytes, block.mark, size);
            blocks.push_back(block);
        } else if (!blocks.empty()) {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            release();
        }
    }
    while (!blocks.empty()) {
        release();
    }
    CBlockPool::Release(nullptr, 16);
}

#include "Base/Containers/qvBlockAllocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <stdexcept>

#include "Support/SeededRandom.h"

using qv::BlockAllocator;

namespace {

std::uintptr_t addressOf(void * p) { return reinterpret_cast<std::uintptr_t>(p); }

} // namespace

TEST(BlockAllocator, HandsOutElementsThatDoNotOverlap) {
    qvTest::SeededRandom random;
    for (unsigned size : {1U, 2U, 8U, 9U, 13U, 24U, 61U}) {
        BlockAllocator allocator(size, 1 + random.below(12));
        unsigned const cell = std::max(size, unsigned(sizeof(void *)));
        std::set<unsigned char *> used;
        int most = 0;
        for (int step = 0; step < 2000; ++step) {
            if (used.empty() || random.below(5) < (step < 1000 ? 3 : 2)) {
                auto * const p = static_cast<unsigned char *>(allocator.alloc());
                std::memset(p, 0xa5, cell);
                auto const next = used.lower_bound(p);
                ASSERT_TRUE(next == used.end() || *next >= p + cell);
                ASSERT_TRUE(next == used.begin() || *std::prev(next) + cell <= p);
                used.insert(p);
            } else {
                auto const it = std::next(used.begin(), random.below(int(used.size())));
                allocator.free(*it);
                used.erase(it);
            }
            most = std::max(most, int(used.size()));
            ASSERT_EQ(allocator.numAllocated(), int(used.size()));
            // Freed elements are used again before a block is touched.
            ASSERT_EQ(allocator.numAllocated() + allocator.numFreed(), most);
            ASSERT_TRUE(allocator.validate());
        }
        allocator.freeEverything();
        EXPECT_EQ(allocator.numAllocated() + allocator.numFreed(), 0);
        EXPECT_TRUE(allocator.validate());
    }
}

TEST(BlockAllocator, CellsLieSideBySideAndTheLastFreedComesFirst) {
    BlockAllocator tiny(2, 10); // raised to the size of the link
    auto * const first = static_cast<unsigned char *>(tiny.alloc());
    EXPECT_EQ(static_cast<unsigned char *>(tiny.alloc()), first + sizeof(void *));
    BlockAllocator odd(13, 10);
    void * cells[10];
    for (void *& p : cells)
        p = odd.alloc();
    EXPECT_EQ(addressOf(cells[9]) - addressOf(cells[0]), 9U * 13U);
    odd.free(nullptr);
    EXPECT_EQ(odd.numFreed(), 0);
    odd.free(cells[3]);
    odd.free(cells[7]);
    EXPECT_EQ(odd.alloc(), cells[7]);
    EXPECT_EQ(odd.alloc(), cells[3]);
}

TEST(BlockAllocator, KeepsTheAlignmentItIsAskedFor) {
    for (unsigned alignment : {16U, 64U, 256U}) {
        BlockAllocator allocator(2 * alignment, 3, alignment);
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(addressOf(allocator.alloc()) % alignment, 0U);
        EXPECT_TRUE(allocator.validate());
    }
}

TEST(BlockAllocator, TheBlockSizeIsFixedByTheFirstElement) {
    BlockAllocator allocator(8, 10);
    allocator.setNumElementsInBlock(2);
    void * const a = allocator.alloc();
    allocator.setNumElementsInBlock(10);
    allocator.free(a);
    allocator.setNumElementsInBlock(10);
    std::set<std::uintptr_t> blocks;
    for (int i = 0; i < 4; ++i)
        blocks.insert(addressOf(allocator.alloc()));
    // Two elements to a block: a third within reach of the first two would betray a larger one.
    EXPECT_GT(*std::next(blocks.begin(), 2) - *blocks.begin(), 16U);
    EXPECT_TRUE(allocator.validate());
}

TEST(BlockAllocator, RefusesBlocksBeyond32Bits) {
    EXPECT_THROW(BlockAllocator(0x10000, 0x10000), std::length_error);
    BlockAllocator allocator(0x10000, 1);
    EXPECT_THROW(allocator.setNumElementsInBlock(0x10000), std::length_error);
    EXPECT_NE(allocator.alloc(), nullptr);
}

TEST(BlockAllocator, SwapExchangesEverything) {
    BlockAllocator a(8, 10);
    BlockAllocator b(32, 3);
    void * const p = a.alloc();
    a.free(a.alloc());
    a.swap(b);
    EXPECT_EQ(a.numAllocated() + a.numFreed(), 0);
    EXPECT_EQ(b.numAllocated(), 1);
    EXPECT_EQ(b.numFreed(), 1);
    b.free(p);
    EXPECT_EQ(b.alloc(), p);
    EXPECT_TRUE(a.validate() && b.validate());
}

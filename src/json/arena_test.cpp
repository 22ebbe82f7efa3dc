#include "json/arena.h"

#include "json/testing/allocation_counter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using ravenjson::Arena;
using ravenjson::ArenaAllocator;

constexpr std::size_t kPageBytes = 4096;

TEST(ArenaTest, AllocatesFromHeapWithoutArena) {
    const AllocationCounter heap;
    void* const first = Arena::allocate(24);
    void* const second = Arena::allocate(24);
    EXPECT_EQ(heap.liveBlocks(), 2);
    Arena::deallocate(first);
    EXPECT_EQ(heap.liveBlocks(), 1);
    Arena::deallocate(second);
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, FreesPageWithItsLastBlock) {
    const AllocationCounter heap;
    void* first = nullptr;
    void* second = nullptr;
    {
        const Arena arena(kPageBytes);
        first = Arena::allocate(24);
        second = Arena::allocate(24);
        EXPECT_EQ(heap.liveBlocks(), 1);
    }
    EXPECT_EQ(heap.liveBlocks(), 1);
    Arena::deallocate(first);
    EXPECT_EQ(heap.liveBlocks(), 1);
    Arena::deallocate(second);
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, DestructorFreesUnusedPage) {
    const AllocationCounter heap;
    { const Arena unused(kPageBytes); }
    EXPECT_EQ(heap.allocations(), 0U);
    {
        const Arena arena(kPageBytes);
        Arena::deallocate(Arena::allocate(24));
        EXPECT_EQ(heap.liveBlocks(), 1) << "the arena still uses the page";
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, BlocksAreAlignedAndDoNotOverlap) {
    std::vector<unsigned char*> blocks;
    constexpr std::size_t kBytes = 40;
    {
        const Arena arena(kPageBytes);
        for (int i = 0; i < 1000; ++i) {
            blocks.push_back(static_cast<unsigned char*>(Arena::allocate(kBytes)));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back()) % alignof(std::uint64_t), 0U);
            std::memset(blocks.back(), i % 256, kBytes);
        }
    }
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(blocks[i][0], i % 256);
        EXPECT_EQ(blocks[i][kBytes - 1], i % 256);
    }
    for (unsigned char* const block : blocks) {
        Arena::deallocate(block);
    }
}

TEST(ArenaTest, PageSizeGrowsGeometrically) {
    std::vector<void*> blocks(100'000);
    const AllocationCounter heap;
    {
        const Arena arena(kPageBytes);
        for (void*& block : blocks) {
            block = Arena::allocate(32);
        }
    }
    EXPECT_LE(heap.allocations(), 11U);
    for (void* const block : blocks) {
        Arena::deallocate(block);
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, AllocatesLargeBlocksFromHeap) {
    const AllocationCounter heap;
    const Arena arena(kPageBytes);
    void* const large = Arena::allocate(100'000);
    EXPECT_EQ(heap.liveBlocks(), 1);
    std::memset(large, 1, 100'000);
    Arena::deallocate(large);
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, UsesInnermostArena) {
    const AllocationCounter heap;
    const Arena outer(kPageBytes);
    void* const first = Arena::allocate(24);
    void* second = nullptr;
    {
        const Arena inner(kPageBytes);
        second = Arena::allocate(24);
        EXPECT_EQ(heap.liveBlocks(), 2);
    }
    void* const third = Arena::allocate(24);
    EXPECT_EQ(heap.liveBlocks(), 2);
    Arena::deallocate(second);
    EXPECT_EQ(heap.liveBlocks(), 1);
    Arena::deallocate(first);
    Arena::deallocate(third);
}

TEST(ArenaTest, FreesBlocksFromAnotherThread) {
    std::vector<void*> blocks;
    {
        const Arena arena(kPageBytes);
        for (int i = 0; i < 2000; ++i) {
            blocks.push_back(Arena::allocate(24));
        }
        // While the arena still uses the page ...
        std::thread([&] { Arena::deallocate(blocks.back()); }).join();
        blocks.pop_back();
    }
    // ... and afterwards, on two threads concurrently.
    const auto freeAlternateBlocks = [&](std::size_t first) {
        for (std::size_t i = first; i < blocks.size(); i += 2) {
            Arena::deallocate(blocks[i]);
        }
    };
    std::thread other(freeAlternateBlocks, 0);
    freeAlternateBlocks(1);
    other.join();
}

TEST(ArenaTest, BatchFreesBlocksOfSeveralPages) {
    const AllocationCounter heap;
    void* onHeap = Arena::allocate(24);
    void* onFirst = nullptr;
    void* onSecond = nullptr;
    void* alsoOnFirst = nullptr;
    {
        const Arena first(kPageBytes);
        onFirst = Arena::allocate(24);
        {
            const Arena second(kPageBytes);
            onSecond = Arena::allocate(24);
        }
        alsoOnFirst = Arena::allocate(24);
    }
    EXPECT_EQ(heap.liveBlocks(), 3);
    {
        const Arena::DeallocationBatch batch;
        Arena::deallocate(onFirst);
        Arena::deallocate(onHeap);
        Arena::deallocate(onSecond);
        Arena::deallocate(alsoOnFirst);
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaAllocatorTest, WorksWithStandardContainers) {
    const AllocationCounter heap;
    std::vector<std::int64_t, ArenaAllocator<std::int64_t>> numbers;
    {
        const Arena arena(kPageBytes);
        numbers.assign({1, 2, 3});
        EXPECT_EQ(heap.liveBlocks(), 1);
    }
    numbers.resize(10, 4); // without the arena
    EXPECT_EQ(numbers.front(), 1);
    EXPECT_EQ(numbers.back(), 4);
    numbers = {};
    numbers.shrink_to_fit();
    EXPECT_EQ(heap.liveBlocks(), 0);
}

// Each allocator can free the blocks of any other, so containers may swap their blocks.
TEST(ArenaAllocatorTest, IsEqualToAnyOther) {
    EXPECT_EQ(ArenaAllocator<char>(), ArenaAllocator<char>());
}

} // namespace

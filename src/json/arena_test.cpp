#include "json/arena.h"

#include "json/testing/heap_watch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using ravenjson::Arena;
using ravenjson::ArenaAllocator;

constexpr std::size_t kPage = 4096;

TEST(ArenaTest, withoutOneEachBlockIsFromTheHeap) {
    const HeapWatch heap;
    void* const first = Arena::allocate(24);
    void* const second = Arena::allocate(24);
    EXPECT_EQ(heap.liveBlocks(), 2);
    Arena::deallocate(first);
    EXPECT_EQ(heap.liveBlocks(), 1);
    Arena::deallocate(second);
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, blocksShareAPageWhichLeavesWithTheLastOfThem) {
    const HeapWatch heap;
    void* first = nullptr;
    void* second = nullptr;
    {
        const Arena arena(kPage);
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

TEST(ArenaTest, aPageWithoutBlocksLeavesWithTheArena) {
    const HeapWatch heap;
    { const Arena unused(kPage); }
    EXPECT_EQ(heap.allocations(), 0U);
    {
        const Arena arena(kPage);
        Arena::deallocate(Arena::allocate(24));
        EXPECT_EQ(heap.liveBlocks(), 1) << "the page is still cut from";
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, blocksAreAlignedAndDoNotOverlap) {
    std::vector<unsigned char*> blocks;
    constexpr std::size_t kBytes = 40;
    {
        const Arena arena(kPage);
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

TEST(ArenaTest, pagesGrowSoThatManyBlocksTakeFewOfThem) {
    std::vector<void*> blocks(100'000);
    const HeapWatch heap;
    {
        const Arena arena(kPage);
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

TEST(ArenaTest, largeBlocksAreLeftToTheHeap) {
    const HeapWatch heap;
    const Arena arena(kPage);
    void* const large = Arena::allocate(100'000);
    EXPECT_EQ(heap.liveBlocks(), 1);
    std::memset(large, 1, 100'000);
    Arena::deallocate(large);
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaTest, theInnermostCounts) {
    const HeapWatch heap;
    const Arena outer(kPage);
    void* const first = Arena::allocate(24);
    void* second = nullptr;
    {
        const Arena inner(kPage);
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

TEST(ArenaTest, anotherThreadMayFreeABlock) {
    std::vector<void*> blocks;
    {
        const Arena arena(kPage);
        for (int i = 0; i < 2000; ++i) {
            blocks.push_back(Arena::allocate(24));
        }
        // While the page is open ...
        std::thread([&] { Arena::deallocate(blocks.back()); }).join();
        blocks.pop_back();
    }
    // ... and both at a time afterwards.
    const auto freeEverySecond = [&](std::size_t first) {
        for (std::size_t i = first; i < blocks.size(); i += 2) {
            Arena::deallocate(blocks[i]);
        }
    };
    std::thread other(freeEverySecond, 0);
    freeEverySecond(1);
    other.join();
}

TEST(ArenaTest, freeingTogetherFreesFromAnyPage) {
    const HeapWatch heap;
    void* alone = Arena::allocate(24);
    void* onFirst = nullptr;
    void* onSecond = nullptr;
    void* onFirstToo = nullptr;
    {
        const Arena first(kPage);
        onFirst = Arena::allocate(24);
        {
            const Arena second(kPage);
            onSecond = Arena::allocate(24);
        }
        onFirstToo = Arena::allocate(24);
    }
    EXPECT_EQ(heap.liveBlocks(), 3);
    {
        const Arena::FreeTogether together;
        Arena::deallocate(onFirst);
        Arena::deallocate(alone);
        Arena::deallocate(onSecond);
        Arena::deallocate(onFirstToo);
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ArenaAllocatorTest, servesStandardContainers) {
    const HeapWatch heap;
    std::vector<std::int64_t, ArenaAllocator<std::int64_t>> numbers;
    {
        const Arena arena(kPage);
        numbers.assign({1, 2, 3});
        EXPECT_EQ(heap.liveBlocks(), 1);
    }
    numbers.resize(10, 4); // with the arena gone
    EXPECT_EQ(numbers.front(), 1);
    EXPECT_EQ(numbers.back(), 4);
    numbers = {};
    numbers.shrink_to_fit();
    EXPECT_EQ(heap.liveBlocks(), 0);
}

} // namespace

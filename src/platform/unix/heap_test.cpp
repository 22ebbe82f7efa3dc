#include "platform/heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#ifdef __GLIBC__
#include <malloc.h>
#include <sys/resource.h>
#endif

namespace platform {
namespace {

class HeapTest : public testing::Test {
protected:
    void SetUp() override {
#ifndef __GLIBC__
        GTEST_SKIP() << "this C library's heap is left as it is";
#endif
        if (QUORIN_IS_SANITIZED) {
            GTEST_SKIP() << "a sanitizer has a heap of its own";
        }
        suitHeapToWorkers();
    }
};

#ifdef __GLIBC__

// Into how many parts the heap is split.
std::size_t parts() {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const stream = open_memstream(&text, &size);
    EXPECT_EQ(malloc_info(0, stream), 0);
    std::fclose(stream);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    std::size_t count = 0;
    for (const char* found = text; (found = std::strstr(found, "<heap nr=")) != nullptr; ++found) {
        ++count;
    }
    return count;
}

// Pages that this thread had to get from the system until now.
long fetchedPages() {
    rusage usage{};
    EXPECT_EQ(getrusage(RUSAGE_THREAD, &usage), 0);
    return usage.ru_minflt;
}

TEST_F(HeapTest, manyThreadsShareTwoParts) {
    const std::size_t before = parts(); // more than one only when other tests ran in this process
    constexpr int count = 16;
    std::latch allAllocate(count);
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&allAllocate] {
            const std::string text(100'000, 'x');
            EXPECT_EQ(text.back(), 'x');
            allAllocate.arrive_and_wait();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_LE(parts(), std::max<std::size_t>(before, 2));
    EXPECT_GE(parts(), 2U);
}

TEST_F(HeapTest, whatWasGivenBackIsUsedAgain) {
    constexpr std::size_t size = std::size_t{3} * 1024 * 1024;
    const auto use = [] {
        const long before = fetchedPages();
        const std::string bytes(size, 'x');
        EXPECT_EQ(bytes.back(), 'x');
        return fetchedPages() - before;
    };
    use();
    EXPECT_LT(use(), 10) << "of the " << size / 4096 << " pages that it takes";
}

#endif

} // namespace
} // namespace platform

#include "json/testing/heap_watch.h"

#include <cstdlib>
#include <new>

namespace {

thread_local constinit std::ptrdiff_t liveBlocks = 0;
thread_local constinit std::size_t allocations = 0;
thread_local constinit std::size_t allocatedBytes = 0;

} // namespace

// The test program's own operator new and delete; those for arrays call them.

void* operator new(std::size_t bytes) {
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++liveBlocks;
    ++allocations;
    allocatedBytes += bytes;
    return block;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        --liveBlocks;
        std::free(block);
    }
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

HeapWatch::HeapWatch()
    : liveBlocks_(::liveBlocks), allocations_(::allocations), allocatedBytes_(::allocatedBytes) {}

std::ptrdiff_t HeapWatch::liveBlocks() const {
    return ::liveBlocks - liveBlocks_;
}

std::size_t HeapWatch::allocations() const {
    return ::allocations - allocations_;
}

std::size_t HeapWatch::allocatedBytes() const {
    return ::allocatedBytes - allocatedBytes_;
}

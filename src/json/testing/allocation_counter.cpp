#include "json/testing/allocation_counter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local constinit std::ptrdiff_t liveBlocks = 0;
thread_local constinit std::size_t allocations = 0;
thread_local constinit std::size_t allocatedBytes = 0;

} // namespace

// Replaces operator new and delete of the test program; the array forms call these.

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

AllocationCounter::AllocationCounter()
    : liveBlocks_(::liveBlocks), allocations_(::allocations), allocatedBytes_(::allocatedBytes) {}

std::ptrdiff_t AllocationCounter::liveBlocks() const {
    return ::liveBlocks - liveBlocks_;
}

std::size_t AllocationCounter::allocations() const {
    return ::allocations - allocations_;
}

std::size_t AllocationCounter::allocatedBytes() const {
    return ::allocatedBytes - allocatedBytes_;
}

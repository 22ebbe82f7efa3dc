#pragma once

#include <cstddef>

// What the calling thread has taken from the heap with operator new since the watch was made.
class HeapWatch {
public:
    HeapWatch();

    // Blocks taken and not given back, which may be fewer than none.
    [[nodiscard]] std::ptrdiff_t liveBlocks() const;
    [[nodiscard]] std::size_t allocations() const;
    [[nodiscard]] std::size_t allocatedBytes() const;

private:
    std::ptrdiff_t liveBlocks_;
    std::size_t allocations_;
    std::size_t allocatedBytes_;
};

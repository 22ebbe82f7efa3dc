#pragma once

#include <cstddef>

// Counts the calling thread's use of operator new and delete since construction.
class AllocationCounter {
public:
    AllocationCounter();

    // Allocations minus deallocations; negative if older blocks were freed.
    [[nodiscard]] std::ptrdiff_t liveBlocks() const;
    [[nodiscard]] std::size_t allocations() const;
    [[nodiscard]] std::size_t allocatedBytes() const;

private:
    std::ptrdiff_t liveBlocks_;
    std::size_t allocations_;
    std::size_t allocatedBytes_;
};

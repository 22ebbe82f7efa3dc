#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace ravenjson {

// Arena allocator for value trees: many small blocks with similar lifetimes.
//
// While an Arena exists, allocate() on its thread takes small blocks from the arena's pages;
// without an Arena, and for large blocks, it uses the heap. Any thread may free a block, before or
// after the arena is destroyed. A page is freed with its last block, so one remaining block keeps
// its whole page allocated.
//
// Arenas nest: the innermost one is used. Destroy them on the thread that created them, in reverse
// order of construction.
class Arena {
public:
    // `expectedBytes` is the approximate size of the first page; each further page is twice as
    // large as the one before, up to a limit.
    explicit Arena(std::size_t expectedBytes) noexcept;
    ~Arena();

    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // Returns a block aligned for pointers and 64-bit integers. `bytes` must be a multiple of that
    // alignment. Throws std::bad_alloc.
    [[nodiscard]] static void* allocate(std::size_t bytes) {
        Arena* const arena = current_;
        return arena != nullptr && bytes <= kMaxBlockBytes ? arena->allocateFromPage(bytes)
                                                           : allocateFromHeap(bytes);
    }
    // Frees a block returned by allocate(). Thread-safe.
    static void deallocate(void* block) noexcept;

    class DeallocationBatch;

private:
    struct Page;

    // Precedes each block.
    struct BlockHeader {
        Page* page; // nullptr if the block was allocated from the heap
    };

    static constexpr std::size_t kMaxBlockBytes = 256; // larger blocks gain little from an arena

    void* allocateFromPage(std::size_t bytes) {
        bytes += sizeof(BlockHeader);
        if (static_cast<std::size_t>(pageEnd_ - free_) < bytes) {
            addPage();
        }
        ++blocks_;
        return new (std::exchange(free_, free_ + bytes)) BlockHeader{page_} + 1;
    }

    [[nodiscard]] static void* allocateFromHeap(std::size_t bytes);
    void addPage();
    void closePage() noexcept;
    static void releaseBlocks(Page& page, std::size_t blocks) noexcept;

    static inline thread_local constinit Arena* current_ = nullptr;
    static inline thread_local constinit DeallocationBatch* currentBatch_ = nullptr;

    Page* page_ = nullptr;   // the current page, from which blocks are allocated
    std::size_t blocks_ = 0; // allocated from the current page
    std::byte* free_ = nullptr;
    std::byte* pageEnd_ = nullptr;
    std::size_t nextPageBytes_;
    Arena* const outer_;
};

// While one exists, deallocations on its thread update a page's atomic block count once for a run
// of blocks of the same page instead of once per block. Must not be nested.
class Arena::DeallocationBatch {
public:
    DeallocationBatch() noexcept;
    ~DeallocationBatch();

    DeallocationBatch(const DeallocationBatch&) = delete;
    DeallocationBatch& operator=(const DeallocationBatch&) = delete;

private:
    friend class Arena;

    void add(Page& page) noexcept;
    void flush() noexcept;

    Page* page_ = nullptr; // the page of the blocks counted
    std::size_t blocks_ = 0;
};

inline void Arena::deallocate(void* block) noexcept {
    BlockHeader* const header = static_cast<BlockHeader*>(block) - 1;
    if (header->page == nullptr) {
        ::operator delete(header);
    } else if (currentBatch_ != nullptr) {
        currentBatch_->add(*header->page);
    } else {
        releaseBlocks(*header->page, 1);
    }
}

inline void Arena::DeallocationBatch::add(Page& page) noexcept {
    if (&page != page_) {
        flush();
        page_ = &page;
    }
    ++blocks_;
}

// Standard allocator that uses Arena::allocate() and Arena::deallocate().
template<class T>
struct ArenaAllocator {
    static_assert(alignof(T) <= alignof(void*));

    using value_type = T;

    ArenaAllocator() noexcept = default;
    template<class U>
    ArenaAllocator(const ArenaAllocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        constexpr std::size_t unit = alignof(void*);
        return static_cast<T*>(Arena::allocate((count * sizeof(T) + unit - 1) / unit * unit));
    }
    void deallocate(T* block, std::size_t) noexcept { Arena::deallocate(block); }

    friend bool operator==(const ArenaAllocator&, const ArenaAllocator&) noexcept { return true; }
};

} // namespace ravenjson

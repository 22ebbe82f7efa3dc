#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace ravenjson {

// Memory for trees, which are made of many small parts that come, and mostly go, together.
//
// While an Arena lives, the small blocks its thread allocates are cut from the arena's pages, one
// behind another. Without one, each block comes from the heap by itself. Either way a block may
// be freed at any time and by any thread, also after the arena is gone: a page goes back to the
// heap with the last of its blocks. So a block that outlives the others keeps its page.
//
// An Arena belongs to the scope and the thread it is made in; the innermost one counts.
class Arena {
public:
    // The first page has about that size, each further one twice the size of the one before.
    explicit Arena(std::size_t expectedBytes) noexcept;
    ~Arena();

    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // A block aligned for pointers and 64-bit numbers, as `bytes` must be. Throws std::bad_alloc.
    [[nodiscard]] static void* allocate(std::size_t bytes) {
        Arena* const arena = current_;
        return arena != nullptr && bytes <= kLargestBlock ? arena->cut(bytes)
                                                          : allocateAlone(bytes);
    }
    static void deallocate(void* block) noexcept;

    class FreeTogether;

private:
    struct Page;

    // Stands before each block.
    struct BlockHead {
        Page* page; // none: the block is from the heap by itself
    };

    static constexpr std::size_t kLargestBlock = 256; // the heap is good enough at larger ones

    void* cut(std::size_t bytes) {
        bytes += sizeof(BlockHead);
        if (static_cast<std::size_t>(pageEnd_ - free_) < bytes) {
            addPage();
        }
        ++blocks_;
        return new (std::exchange(free_, free_ + bytes)) BlockHead{page_} + 1;
    }

    [[nodiscard]] static void* allocateAlone(std::size_t bytes);
    void addPage();
    void closePage() noexcept;
    static void giveBack(Page& page, std::size_t blocks) noexcept;

    static inline thread_local constinit Arena* current_ = nullptr;
    static inline thread_local constinit FreeTogether* freeTogether_ = nullptr;

    Page* page_ = nullptr;   // the one that blocks are cut from
    std::size_t blocks_ = 0; // cut from that page
    std::byte* free_ = nullptr;
    std::byte* pageEnd_ = nullptr;
    std::size_t nextPageBytes_;
    Arena* const outer_;
};

// While one lives, the blocks its thread frees are taken off their page's count many at a time,
// since each time the threads have to agree on it. Not to be nested.
class Arena::FreeTogether {
public:
    FreeTogether() noexcept;
    ~FreeTogether();

    FreeTogether(const FreeTogether&) = delete;
    FreeTogether& operator=(const FreeTogether&) = delete;

private:
    friend class Arena;

    void free(Page& page) noexcept;
    void flush() noexcept;

    Page* page_ = nullptr; // the one that the last blocks belong to
    std::size_t blocks_ = 0;
};

inline void Arena::deallocate(void* block) noexcept {
    BlockHead* const head = static_cast<BlockHead*>(block) - 1;
    if (head->page == nullptr) {
        ::operator delete(head);
    } else if (freeTogether_ != nullptr) {
        freeTogether_->free(*head->page);
    } else {
        giveBack(*head->page, 1);
    }
}

inline void Arena::FreeTogether::free(Page& page) noexcept {
    if (&page != page_) {
        flush();
        page_ = &page;
    }
    ++blocks_;
}

// Has the parts of standard containers allocated by Arena.
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

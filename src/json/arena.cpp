#include "json/arena.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <utility>

namespace ravenjson {
namespace {

constexpr std::size_t kSmallestPage = 1024;
constexpr std::size_t kLargestFirstPage = 64 * 1024;
constexpr std::size_t kLargestPage = 16 * 1024 * 1024;
constexpr std::size_t kLargestBlock = kSmallestPage / 4; ///< larger ones are left to the heap

thread_local constinit Arena* currentArena = nullptr;
thread_local constinit Arena::FreeTogether* currentFreeTogether = nullptr;

} // namespace

/// Stands at the beginning of its own memory.
struct Arena::Page {
    /// While blocks are still cut from a page, they are counted by the arena alone, and this count
    /// is too high to be brought to zero by those that are freed.
    static constexpr std::size_t kOpen = std::numeric_limits<std::size_t>::max() / 2;

    std::atomic<std::size_t> blocks{kOpen};
};

/// Stands before each block.
struct Arena::BlockHead {
    Page* page; ///< none: the block is from the heap by itself
};

Arena::Arena(std::size_t expectedBytes) noexcept
    : nextPageBytes_(std::clamp(expectedBytes, kSmallestPage, kLargestFirstPage)),
      outer_(std::exchange(currentArena, this)) {}

Arena::~Arena() {
    currentArena = outer_;
    closePage();
}

void* Arena::allocate(std::size_t bytes) {
    const std::size_t needed = sizeof(BlockHead) + bytes;
    const bool cuts = currentArena != nullptr && needed <= kLargestBlock;
    void* const memory = cuts ? currentArena->cut(needed) : ::operator new(needed);
    return new (memory) BlockHead{cuts ? currentArena->page_ : nullptr} + 1;
}

void Arena::deallocate(void* block) noexcept {
    if (block == nullptr) {
        return;
    }
    BlockHead* const head = static_cast<BlockHead*>(block) - 1;
    if (head->page == nullptr) {
        ::operator delete(head);
    } else if (currentFreeTogether != nullptr) {
        currentFreeTogether->free(*head->page);
    } else {
        giveBack(*head->page, 1);
    }
}

void* Arena::cut(std::size_t bytes) {
    bytes = (bytes + alignof(BlockHead) - 1) / alignof(BlockHead) * alignof(BlockHead);
    if (static_cast<std::size_t>(pageEnd_ - free_) < bytes) {
        addPage();
    }
    ++blocks_;
    return std::exchange(free_, free_ + bytes);
}

void Arena::addPage() {
    void* const memory = ::operator new(nextPageBytes_);
    closePage();
    page_ = new (memory) Page;
    free_ = static_cast<std::byte*>(memory) + sizeof(Page);
    pageEnd_ = static_cast<std::byte*>(memory) + nextPageBytes_;
    nextPageBytes_ = std::min(nextPageBytes_ * 2, kLargestPage);
}

void Arena::closePage() noexcept {
    if (page_ != nullptr) {
        giveBack(*std::exchange(page_, nullptr), Page::kOpen - std::exchange(blocks_, 0));
    }
}

void Arena::giveBack(Page& page, std::size_t blocks) noexcept {
    if (page.blocks.fetch_sub(blocks, std::memory_order_acq_rel) == blocks) {
        page.~Page();
        ::operator delete(&page);
    }
}

Arena::FreeTogether::FreeTogether() noexcept {
    currentFreeTogether = this;
}

Arena::FreeTogether::~FreeTogether() {
    flush();
    currentFreeTogether = nullptr;
}

void Arena::FreeTogether::free(Page& page) noexcept {
    if (&page != page_) {
        flush();
        page_ = &page;
    }
    ++blocks_;
}

void Arena::FreeTogether::flush() noexcept {
    if (page_ != nullptr) {
        giveBack(*std::exchange(page_, nullptr), std::exchange(blocks_, 0));
    }
}

} // namespace ravenjson

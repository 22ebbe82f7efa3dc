#include "json/arena.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <utility>

namespace ravenjson {
namespace {

constexpr std::size_t kMinPageBytes = 1024;
constexpr std::size_t kMaxFirstPageBytes = 64 * kMinPageBytes;
constexpr std::size_t kMaxPageBytes = 256 * kMaxFirstPageBytes;

} // namespace

// Header of a page; the blocks follow it in the same allocation.
struct Arena::Page {
    // Initial count of a page still in use by an arena. Only the arena counts the blocks it
    // allocates, so the count must not reach 0 before closePage() corrects it.
    static constexpr std::size_t kOpen = std::numeric_limits<std::size_t>::max() / 2;

    std::atomic<std::size_t> blocks{kOpen};
};

Arena::Arena(std::size_t expectedBytes) noexcept
    : nextPageBytes_(std::clamp(expectedBytes, kMinPageBytes, kMaxFirstPageBytes)),
      outer_(std::exchange(current_, this)) {}

Arena::~Arena() {
    current_ = outer_;
    closePage();
}

void* Arena::allocateFromHeap(std::size_t bytes) {
    return new (::operator new(sizeof(BlockHeader) + bytes)) BlockHeader{nullptr} + 1;
}

void Arena::addPage() {
    void* const memory = ::operator new(nextPageBytes_);
    closePage();
    page_ = new (memory) Page;
    free_ = static_cast<std::byte*>(memory) + sizeof(Page);
    pageEnd_ = static_cast<std::byte*>(memory) + nextPageBytes_;
    nextPageBytes_ = std::min(nextPageBytes_ * 2, kMaxPageBytes);
}

void Arena::closePage() noexcept {
    if (page_ != nullptr) {
        releaseBlocks(*std::exchange(page_, nullptr), Page::kOpen - std::exchange(blocks_, 0));
    }
}

void Arena::releaseBlocks(Page& page, std::size_t blocks) noexcept {
    if (page.blocks.fetch_sub(blocks, std::memory_order_acq_rel) == blocks) {
        page.~Page();
        ::operator delete(&page);
    }
}

Arena::DeallocationBatch::DeallocationBatch() noexcept {
    currentBatch_ = this;
}

Arena::DeallocationBatch::~DeallocationBatch() {
    flush();
    currentBatch_ = nullptr;
}

void Arena::DeallocationBatch::flush() noexcept {
    if (page_ != nullptr) {
        releaseBlocks(*std::exchange(page_, nullptr), std::exchange(blocks_, 0));
    }
}

} // namespace ravenjson

#include "json/arena.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <utility>

namespace ravenjson {
namespace {

constexpr std::size_t kSmallestPage = 1024;
constexpr std::size_t kLargestFirstPage = 64 * kSmallestPage;
constexpr std::size_t kLargestPage = 256 * kLargestFirstPage;

} // namespace

// Stands at the beginning of its own memory.
struct Arena::Page {
    // While blocks are still cut from a page, they are counted by the arena alone, and this count
    // is too high to be brought to zero by those that are freed.
    static constexpr std::size_t kOpen = std::numeric_limits<std::size_t>::max() / 2;

    std::atomic<std::size_t> blocks{kOpen};
};

Arena::Arena(std::size_t expectedBytes) noexcept
    : nextPageBytes_(std::clamp(expectedBytes, kSmallestPage, kLargestFirstPage)),
      outer_(std::exchange(current_, this)) {}

Arena::~Arena() {
    current_ = outer_;
    closePage();
}

void* Arena::allocateAlone(std::size_t bytes) {
    return new (::operator new(sizeof(BlockHead) + bytes)) BlockHead{nullptr} + 1;
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
    freeTogether_ = this;
}

Arena::FreeTogether::~FreeTogether() {
    flush();
    freeTogether_ = nullptr;
}

void Arena::FreeTogether::flush() noexcept {
    if (page_ != nullptr) {
        giveBack(*std::exchange(page_, nullptr), std::exchange(blocks_, 0));
    }
}

} // namespace ravenjson

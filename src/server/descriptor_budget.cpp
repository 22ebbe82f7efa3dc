#include "server/descriptor_budget.h"

#include <utility>

namespace quorin {

namespace {

// Descriptors that a worker may open besides its connection: its event loop, the file that it
// sends, that file's lock, and briefly one more (another process's stale lock, or the table of
// content types).
constexpr qintptr kPerQueued = kDescriptorsPerConnection - 1;

// Those of them that an active worker may not have opened yet: it already has its event loop, and
// usually the file.
constexpr qintptr kPerActive = 2;

// Connections may use only 1/kHostShare of the free descriptors until the next count. The rest is
// left to the host.
constexpr qintptr kHostShare = 2;

} // namespace

DescriptorBudget::DescriptorBudget(std::function<std::optional<qintptr>()> limit,
                                   std::function<std::optional<qintptr>()> openDescriptors)
    : limit_(std::move(limit)), openDescriptors_(std::move(openDescriptors)) {}

bool DescriptorBudget::admitsAnother(int active, std::size_t queued) {
    if (uncounted_ > 0) {
        --uncounted_;
        return true;
    }
    const std::optional<qintptr> limit = limit_();
    if (!limit) {
        return true;
    }
    const std::optional<qintptr> open = openDescriptors_();
    if (!open) {
        return false;
    }
    const qintptr reserved =
        kPerActive * active + kPerQueued * (static_cast<qintptr>(queued) + 1) + kSpareDescriptors;
    const qintptr free = *limit - *open - reserved;
    if (free < 0) {
        return false;
    }
    uncounted_ = free / (kHostShare * kDescriptorsPerConnection);
    return true;
}

} // namespace quorin

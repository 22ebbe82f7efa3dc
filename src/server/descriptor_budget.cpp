#include "server/descriptor_budget.h"

#include <utility>

namespace quorin {

namespace {

// What a worker may open besides its connection: its event loop, the file that it sends, that
// file's lock, and for a moment one more (another process's stale lock, or the table of content
// types).
constexpr qintptr kPerQueued = 4;

// Of these an active worker has its event loop, and usually the file.
constexpr qintptr kPerActive = 2;

// For the control channel, the log, and what the host opens between two counts.
constexpr qintptr kSpare = 8;

// A connection and all that its worker may open.
constexpr qintptr kPerConnection = 1 + kPerQueued;

// A count leaves this part of what is free to the host until the next count.
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
        kPerActive * active + kPerQueued * (static_cast<qintptr>(queued) + 1) + kSpare;
    const qintptr free = *limit - *open - reserved;
    if (free < 0) {
        return false;
    }
    uncounted_ = free / (kHostShare * kPerConnection);
    return true;
}

} // namespace quorin

#pragma once

#include <QtGlobal>

#include <limits>

namespace quorin {

// How many descriptors connections may take, where the system bounds what a process has open. The
// rest is for the workers: without one for its event loop Qt ends the process, and without one for
// its file a request fails.
class DescriptorBudget {
public:
    // No bound.
    DescriptorBudget() = default;

    // For `workers` at a time; `limit` is that of the process, and `used` are taken for good.
    DescriptorBudget(qintptr limit, qintptr used, int workers);

    // True when a connection may have this descriptor.
    [[nodiscard]] bool covers(qintptr descriptor) const noexcept { return descriptor < end_; }

private:
    qintptr end_ = std::numeric_limits<qintptr>::max();
};

} // namespace quorin

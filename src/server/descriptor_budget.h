#pragma once

#include "platform/descriptors.h"

#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <optional>

namespace quorin {

// Decides whether the process has enough descriptors for one more connection, where the system
// limits what a process may have open. Keeps descriptors for the workers of the connections that
// were admitted: without one for its event loop a worker cannot run, and without one for its file a
// request fails. Used on the main thread.
class DescriptorBudget {
public:
    // The functions replace the system's answers in tests.
    explicit DescriptorBudget(
        std::function<std::optional<qintptr>()> limit = platform::descriptorLimit,
        std::function<std::optional<qintptr>()> openDescriptors = platform::openDescriptors);

    // Returns true if one more connection may be accepted while `active` workers run and `queued`
    // connections wait for one. The caller then accepts it. Counts what is open only when the
    // connections that the last count allowed are used up.
    [[nodiscard]] bool admitsAnother(int active, std::size_t queued);

    // Makes the next call count. To be called when the system had no descriptor left.
    void countNext() noexcept { uncounted_ = 0; }

private:
    std::function<std::optional<qintptr>()> limit_;
    std::function<std::optional<qintptr>()> openDescriptors_;
    qintptr uncounted_ = 0; // connections that may be admitted before the next count
};

} // namespace quorin

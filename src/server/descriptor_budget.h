#pragma once

#include "platform/descriptors.h"

#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <optional>

namespace quorin {

// Descriptors that a connection needs at most: its socket and what its worker may open.
inline constexpr qintptr kDescriptorsPerConnection = 5;
// Descriptors for the control pipe, the log, and those that the host opens between two counts.
inline constexpr qintptr kSpareDescriptors = 8;

// Decides whether the process has enough descriptors for one more connection, if the system limits
// their number. Reserves descriptors for the workers of admitted connections. Without this class,
// waiting connections would use up all descriptors, and workers could open neither their event loop
// nor their file. Main thread only.
class DescriptorBudget {
public:
    // Tests pass functions that simulate the system.
    explicit DescriptorBudget(
        std::function<std::optional<qintptr>()> limit = platform::descriptorLimit,
        std::function<std::optional<qintptr>()> openDescriptors = platform::openDescriptors);

    // Returns true if one more connection may be accepted while `active` workers run and `queued`
    // connections wait. The caller then accepts it. Counts the open descriptors only when the
    // connections that the previous count allowed are used up.
    [[nodiscard]] bool admitsAnother(int active, std::size_t queued);

private:
    std::function<std::optional<qintptr>()> limit_;
    std::function<std::optional<qintptr>()> openDescriptors_;
    qintptr uncounted_ = 0; // connections that may be admitted before the next count
};

} // namespace quorin

#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace quorin {

// Returns `time` as the interval of a QTimer, which stores milliseconds in an int: a longer time
// becomes the longest interval, 24 days.
[[nodiscard]] constexpr std::chrono::milliseconds timerInterval(std::chrono::seconds time) {
    constexpr std::chrono::milliseconds longest{std::numeric_limits<int>::max()};
    return std::min(std::chrono::milliseconds(time), longest);
}

} // namespace quorin

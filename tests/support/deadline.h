#pragma once

#include <QDeadlineTimer>
#include <QThread>

#include <chrono>
#include <concepts>

// Tests wait for the event they expect, up to a deadline that only a failure reaches.
namespace quorin::test {

inline constexpr std::chrono::seconds kTestTimeout{60};
inline constexpr int kTestTimeoutMs = int(std::chrono::milliseconds(kTestTimeout).count());

// Checks `condition` every 5 ms. Returns false if it is not met within `timeout`.
template<std::predicate Condition>
[[nodiscard]] bool waitUntil(Condition&& condition,
                             std::chrono::milliseconds timeout = kTestTimeout) {
    const QDeadlineTimer deadline(timeout);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QThread::msleep(5);
    }
    return true;
}

// Qt's coarse timers may expire this much early, in percent of their interval.
inline constexpr int kCoarseTimerPercent = 5;

// The shortest time after which a coarse timer of `interval` may expire.
[[nodiscard]] constexpr std::chrono::milliseconds
earliestExpiry(std::chrono::milliseconds interval) {
    return interval * (100 - kCoarseTimerPercent) / 100;
}

} // namespace quorin::test

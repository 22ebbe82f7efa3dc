#pragma once

#include <QDeadlineTimer>
#include <QThread>

#include <chrono>
#include <concepts>

// Tests wait for what they expect to happen, and give up after a time that is only ever reached by
// a failure.
namespace quorin::test {

inline constexpr std::chrono::seconds kPatience{60};

// Looks every 5 ms whether `condition` holds; false when it does not within `patience`.
template<std::predicate Condition>
[[nodiscard]] bool waitUntil(Condition&& condition,
                             std::chrono::milliseconds patience = kPatience) {
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QThread::msleep(5);
    }
    return true;
}

} // namespace quorin::test

#pragma once

#include <QDeadlineTimer>
#include <QThread>

#include <chrono>
#include <concepts>

// Waiting is done by polling at fixed intervals.
namespace quorin {

inline constexpr std::chrono::microseconds kIdlePoll = std::chrono::milliseconds(100);
inline constexpr std::chrono::microseconds kBusyPoll = std::chrono::milliseconds(10);

// Lets the calling thread sleep.
inline void pause(std::chrono::microseconds time) {
    QThread::usleep(static_cast<unsigned long>(time.count()));
}

// Attempts a thing that another process may hold: 20 times, with half a second behind each failed
// attempt, so for about 10 seconds. False when none succeeded.
template<std::predicate Attempt>
[[nodiscard]] bool attemptPatiently(Attempt&& attempt) {
    constexpr int attempts = 20;
    constexpr std::chrono::microseconds pauseAfterFailure = std::chrono::milliseconds(500);
    for (int tried = 0; tried < attempts; ++tried) {
        if (attempt()) {
            return true;
        }
        pause(pauseAfterFailure);
    }
    return false;
}

// Ends a watcher's thread and waits for it. Asks until it is heard: a thread that has yet to begin
// forgets what it was asked before.
template<typename Watcher>
void stopAndWait(Watcher& watcher) {
    do {
        watcher.Stop();
    } while (!watcher.wait(QDeadlineTimer(kIdlePoll)));
}

} // namespace quorin

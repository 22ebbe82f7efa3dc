#pragma once

#include "platform/pause.h"

#include <QDeadlineTimer>

#include <chrono>
#include <concepts>

// Threads that wait poll at fixed intervals.
namespace quorin {

inline constexpr std::chrono::microseconds kIdlePoll = std::chrono::milliseconds(100);
inline constexpr std::chrono::microseconds kBusyPoll = std::chrono::milliseconds(10);

// Passes of kIdlePoll after which stopOrTerminate() terminates a watcher that is still running.
inline constexpr int kStopPasses = 11;

// Calls `attempt` until it succeeds, at most 20 times, with a pause of half a second after each
// failure: another process has about 10 seconds to release a resource. Returns false if all calls
// fail.
template<std::predicate Attempt>
[[nodiscard]] bool retry(Attempt&& attempt) {
    constexpr int attempts = 20;
    constexpr std::chrono::microseconds pauseAfterFailure = std::chrono::milliseconds(500);
    for (int tried = 0; tried < attempts; ++tried) {
        if (attempt()) {
            return true;
        }
        platform::pause(pauseAfterFailure);
    }
    return false;
}

// Ends a watcher's thread and waits for it. Repeats Stop(): run() clears earlier requests.
template<typename Watcher>
void stopAndWait(Watcher& watcher) {
    do {
        watcher.Stop();
    } while (!watcher.wait(QDeadlineTimer(kIdlePoll)));
}

// Stops the threads of all watchers and waits for them. Terminates those that still run after
// kStopPasses pauses of kIdlePoll. Returns without a pause if none of them runs.
template<typename... Watchers>
void stopOrTerminate(Watchers&... watchers) {
    for (int pass = 0; (watchers.isRunning() || ...); ++pass) {
        if (pass == kStopPasses) {
            (watchers.terminate(), ...);
            return;
        }
        platform::pause(kIdlePoll);
        (watchers.Stop(), ...);
    }
}

} // namespace quorin

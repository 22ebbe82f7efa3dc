#pragma once

#include "platform/threads.h"

#include <QElapsedTimer>

#include <functional>
#include <utility>

namespace quorin {

// Reports whether a thread pool can run one more task. A pool does not notice that a new thread
// failed to start: it counts the task as running for ever, and a quit would wait for it. So the
// probe first starts a thread itself, but only if the pool may have no idle thread.
class ThreadProbe {
public:
    // `canStart` replaces the system's answer in tests.
    explicit ThreadProbe(std::function<bool()> canStart = platform::canStartThread)
        : canStart_(std::move(canStart)) {}

    // Returns true if the pool has, or can start, this many threads.
    [[nodiscard]] bool canRun(int threads);

private:
    std::function<bool()> canStart_;
    int seen_ = 0; // threads that the pool had when sinceSeen_ started
    QElapsedTimer sinceSeen_;
};

} // namespace quorin

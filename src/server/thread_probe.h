#pragma once

#include "platform/threads.h"

#include <QElapsedTimer>

#include <functional>
#include <utility>

namespace quorin {

// Tells whether a thread pool can run one more task. A pool whose new thread fails to start never
// learns of it: it counts the task as running for ever, and a quit would wait for it. So whether
// the system has what a thread takes is tried out first, but only where the pool may have none left
// from before.
class ThreadProbe {
public:
    // `canStart` stands for the system's answer in tests.
    explicit ThreadProbe(std::function<bool()> canStart = platform::canStartThread)
        : canStart_(std::move(canStart)) {}

    // True when the pool has, or can have, so many threads.
    [[nodiscard]] bool canRun(int threads);

private:
    std::function<bool()> canStart_;
    int seen_ = 0; // threads that the pool had at a time it still has them from
    QElapsedTimer sinceSeen_;
};

} // namespace quorin

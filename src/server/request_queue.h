#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

class Worker;

namespace quorin {

// Accepted connections whose worker has not been started yet, first in, first out. Owns them.
// Filled on the main thread, emptied by the queue watcher; every function may be called from both.
class RequestQueue {
public:
    RequestQueue();
    ~RequestQueue();

    void append(std::unique_ptr<Worker> worker);

    // The worker that has waited longest; null when nobody waits.
    [[nodiscard]] std::unique_ptr<Worker> takeFirst();

    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool isEmpty() const { return size() == 0; }

    // Deletes all that wait: their connections close without a reply.
    void clear();

private:
    mutable std::mutex mutex_;
    std::deque<std::unique_ptr<Worker>> workers_;
};

} // namespace quorin

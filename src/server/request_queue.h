#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>

namespace quorin {

class Worker;

// The workers of accepted connections that have not been started yet, first in, first out. Owns the
// workers. Thread-safe; the main thread appends and the queue watcher takes.
class RequestQueue {
public:
    RequestQueue();
    ~RequestQueue();

    void append(std::unique_ptr<Worker> worker);

    // Removes and returns the worker that has waited longest, or null if the queue is empty.
    [[nodiscard]] std::unique_ptr<Worker> takeFirst();

    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool isEmpty() const { return size() == 0; }

    // Deletes all queued workers: their connections close without a reply.
    void clear();

private:
    mutable std::mutex mutex_;
    std::deque<std::unique_ptr<Worker>> workers_;
};

} // namespace quorin

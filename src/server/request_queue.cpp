#include "server/request_queue.h"

#include "worker/worker.h"

#include <utility>

namespace quorin {

RequestQueue::RequestQueue() = default;
RequestQueue::~RequestQueue() = default;

void RequestQueue::append(std::unique_ptr<Worker> worker) {
    const std::lock_guard lock(mutex_);
    workers_.push_back(std::move(worker));
}

std::unique_ptr<Worker> RequestQueue::takeFirst() {
    const std::lock_guard lock(mutex_);
    if (workers_.empty()) {
        return nullptr;
    }
    std::unique_ptr<Worker> first = std::move(workers_.front());
    workers_.pop_front();
    return first;
}

std::size_t RequestQueue::size() const {
    const std::lock_guard lock(mutex_);
    return workers_.size();
}

void RequestQueue::clear() {
    std::deque<std::unique_ptr<Worker>> dropped;
    const std::lock_guard lock(mutex_);
    dropped.swap(workers_);
}

} // namespace quorin

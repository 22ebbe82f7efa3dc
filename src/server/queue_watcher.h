#pragma once

#include <QThread>

#include <atomic>
#include <chrono>

class QThreadPool;

namespace quorin {

class RequestQueue;

// The thread that starts queued workers on the pool, in their order of arrival, while fewer than
// MaxUserSession are active. It polls every 10 ms while the queue contains workers, otherwise every
// 100 ms. It starts no workers after a quit has been requested.
class QueueWatcher : public QThread {
    Q_OBJECT

public:
    // All three objects must outlive the watcher. The threads of `pool` must not expire.
    QueueWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool, RequestQueue* queue);
    // Stops the thread and waits for it.
    ~QueueWatcher() override;

    void run() override;

    // Requests the thread to end after its current sleep; returns at once. Thread-safe. A request
    // made before run() has started is lost.
    void Stop() { stopRequested_ = true; }

    // Returns the time until the next look at the queue. Thread-safe.
    [[nodiscard]] std::chrono::microseconds nextPause() const;

private:
    void startQueuedWorkers();
    // Returns false if the pool would need a new thread for its `active`th task and the system
    // cannot start one. Without this check, a pool whose new thread fails to start would count the
    // task as active forever, and a quit would wait for it.
    [[nodiscard]] bool hasThreadFor(int active);

    const std::atomic<bool>* quitFlag_;
    QThreadPool* pool_;
    RequestQueue* queue_;
    int startedThreads_ = 0; // threads that the pool has started; they do not expire
    std::atomic<bool> stopRequested_ = false;
};

} // namespace quorin

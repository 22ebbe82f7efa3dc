#pragma once

#include <QThread>

#include <atomic>

class QThreadPool;

namespace quorin {

class RequestQueue;

// The thread that moves queued workers from the request queue to the pool, in their order of
// arrival and never more than MaxUserSession at once. It polls every 10 ms while the queue has
// workers, else every 100 ms. Once quitting is requested it starts no more workers.
class QueueWatcher : public QThread {
    Q_OBJECT

public:
    // All three outlive the watcher. The threads of `pool` do not expire.
    QueueWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool, RequestQueue* queue);
    // Stops the thread and waits for it.
    ~QueueWatcher() override;

    void run() override;

    // Asks the thread to end after its current sleep; returns at once. From any thread.
    void Stop() { stopRequested_ = true; }

private:
    void startQueuedWorkers();
    [[nodiscard]] bool hasThreadFor(int active);

    const std::atomic<bool>* quitFlag_;
    QThreadPool* pool_;
    RequestQueue* queue_;
    int startedThreads_ = 0; // pool threads known to exist; they do not expire
    std::atomic<bool> stopRequested_ = false;
};

} // namespace quorin

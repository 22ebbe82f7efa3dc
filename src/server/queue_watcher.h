#pragma once

#include "server/thread_probe.h"

#include <QThread>

#include <atomic>

class QThreadPool;

namespace quorin {
class RequestQueue;
}

// The thread that moves queued workers from the request queue to the pool, in their order of
// arrival and never more than MaxUserSession at once. It polls every 10 ms while the queue has
// workers, else every 100 ms. Once quitting is requested it starts no more workers.
class QueueWatcher : public QThread {
    Q_OBJECT

public:
    // All three outlive the watcher.
    QueueWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool, quorin::RequestQueue* queue);
    // Stops the thread and waits for it.
    ~QueueWatcher() override;

    void run() override;

    // Asks the thread to end after its current sleep; returns at once. From any thread.
    void Stop() { stopRequested_ = true; }

private:
    void startQueuedWorkers();

    const std::atomic<bool>* quitFlag_;
    QThreadPool* pool_;
    quorin::RequestQueue* queue_;
    quorin::ThreadProbe threadProbe_;
    std::atomic<bool> stopRequested_ = false;
};

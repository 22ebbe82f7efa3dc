#pragma once

#include "server/thread_probe.h"

#include <QThread>

#include <atomic>

class QThreadPool;

namespace quorin {
class RequestQueue;
}

// The thread that moves waiting workers from the request queue into the pool, in their order and
// never more than MaxUserSession at once. It looks every 10 ms while somebody waits, else every
// 100 ms.
class QueueWatcher : public QThread {
    Q_OBJECT

public:
    // Both outlive the watcher.
    QueueWatcher(QThreadPool* pool, quorin::RequestQueue* queue);
    // Stops the thread and waits for it.
    ~QueueWatcher() override;

    void run() override;

    // Asks the thread to end after its current sleep; returns at once. From any thread.
    void Stop() { stopRequested_ = true; }

private:
    void startWaitingWorkers();

    QThreadPool* pool_;
    quorin::RequestQueue* queue_;
    quorin::ThreadProbe threadProbe_;
    std::atomic<bool> stopRequested_ = false;
};

#pragma once

#include <QThread>

#include <atomic>

class QThreadPool;

namespace quorin {

// The thread that waits until quitting is requested and the pool has no active thread. It polls
// every 100 ms.
class ThreadPoolWatcher : public QThread {
    Q_OBJECT

public:
    // Both objects must outlive the watcher.
    ThreadPoolWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool);
    // Stops the thread and waits for it.
    ~ThreadPoolWatcher() override;

    void run() override;

    // Requests the thread to end after its current sleep; returns at once. Thread-safe. A request
    // made before run() has started is lost.
    void Stop() { stopRequested_ = true; }

Q_SIGNALS:
    // Emitted once, on the watcher's thread, when it ends: the pool is idle after a quit, or Stop()
    // was called.
    void Satisfied();

private:
    [[nodiscard]] bool isQuitComplete() const;

    const std::atomic<bool>* quitFlag_;
    QThreadPool* pool_;
    std::atomic<bool> stopRequested_ = false;
};

} // namespace quorin

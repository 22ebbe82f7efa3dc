#include "server/thread_pool_watcher.h"

#include "server/polling.h"

#include <QThreadPool>

ThreadPoolWatcher::ThreadPoolWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool)
    : quitFlag_(quitFlag), pool_(pool) {}

ThreadPoolWatcher::~ThreadPoolWatcher() {
    quorin::stopAndWait(*this);
}

void ThreadPoolWatcher::run() {
    stopRequested_ = false;
    do {
        quorin::pause(quorin::kIdlePoll);
    } while (!isQuitComplete() && !stopRequested_);
    Q_EMIT Satisfied();
}

bool ThreadPoolWatcher::isQuitComplete() const {
    return *quitFlag_ && pool_->activeThreadCount() == 0;
}

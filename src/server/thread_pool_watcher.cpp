#include "server/thread_pool_watcher.h"

#include "server/polling.h"

#include <QThreadPool>

namespace quorin {

ThreadPoolWatcher::ThreadPoolWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool)
    : quitFlag_(quitFlag), pool_(pool) {}

ThreadPoolWatcher::~ThreadPoolWatcher() {
    stopAndWait(*this);
}

void ThreadPoolWatcher::run() {
    stopRequested_ = false;
    do {
        platform::pause(kIdlePoll);
    } while (!isQuitComplete() && !stopRequested_);
    Q_EMIT Satisfied();
}

bool ThreadPoolWatcher::isQuitComplete() const {
    return *quitFlag_ && pool_->activeThreadCount() == 0;
}

} // namespace quorin

#include "server/queue_watcher.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "log/log.h"
#include "platform/threads.h"
#include "server/polling.h"
#include "server/request_queue.h"
#include "worker/worker.h"

#include <QThreadPool>

using namespace Qt::StringLiterals;

namespace quorin {

QueueWatcher::QueueWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool,
                           RequestQueue* queue)
    : quitFlag_(quitFlag), pool_(pool), queue_(queue) {}

QueueWatcher::~QueueWatcher() {
    stopAndWait(*this);
}

void QueueWatcher::run() {
    stopRequested_ = false;
    do {
        startQueuedWorkers();
        platform::pause(nextPause());
    } while (!stopRequested_);
}

std::chrono::microseconds QueueWatcher::nextPause() const {
    return queue_->isEmpty() ? kIdlePoll : kBusyPoll;
}

void QueueWatcher::startQueuedWorkers() {
    const int limit = GatewaySettings::instance().MaxUserSession;
    while (!*quitFlag_ && !queue_->isEmpty() && pool_->activeThreadCount() < limit) {
        std::unique_ptr<Worker> worker = queue_->takeFirst();
        if (hasThreadFor(pool_->activeThreadCount() + 1) && pool_->tryStart(worker.get())) {
            static_cast<void>(worker.release()); // the pool deletes it
        } else {
            log::error(endMessage(u"fail to start worker thread"_s));
        }
    }
}

bool QueueWatcher::hasThreadFor(int active) {
    if (active > startedThreads_) {
        if (!platform::canStartThread()) {
            return false;
        }
        startedThreads_ = active;
    }
    return true;
}

} // namespace quorin

#include "server/queue_watcher.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "log/application_logger.h"
#include "server/polling.h"
#include "server/request_queue.h"
#include "worker/worker.h"

#include <QThreadPool>

using namespace Qt::StringLiterals;

QueueWatcher::QueueWatcher(const std::atomic<bool>* quitFlag, QThreadPool* pool,
                           quorin::RequestQueue* queue)
    : quitFlag_(quitFlag), pool_(pool), queue_(queue) {}

QueueWatcher::~QueueWatcher() {
    quorin::stopAndWait(*this);
}

void QueueWatcher::run() {
    stopRequested_ = false;
    do {
        startQueuedWorkers();
        quorin::pause(queue_->isEmpty() ? quorin::kIdlePoll : quorin::kBusyPoll);
    } while (!stopRequested_);
}

void QueueWatcher::startQueuedWorkers() {
    const int limit = GatewaySettings::instance().MaxUserSession;
    while (!*quitFlag_ && !queue_->isEmpty() && pool_->activeThreadCount() < limit) {
        std::unique_ptr<Worker> worker = queue_->takeFirst();
        if (threadProbe_.canRun(pool_->activeThreadCount() + 1) && pool_->tryStart(worker.get())) {
            static_cast<void>(worker.release()); // the pool deletes it
        } else {
            quorin::QuorinGatewayApplicationLogger::logError(
                quorin::endMessage(u"fail to start worker thread"_s));
        }
    }
}

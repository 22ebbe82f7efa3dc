#include "worker/access_line.h"

#include "worker/worker_context.h"

namespace quorin {

QString accessLine(const WorkerContext& worker, QStringView status) {
    const QString target = worker.requestUrl.url(QUrl::RemoveScheme).mid(1);
    const qint64 duration = worker.requestStart.msecsTo(worker.requestEnd);
    return worker.methodText + u' ' + target + u" - - " + worker.remoteAddressText + u' ' + status +
           u' ' + QString::number(duration);
}

} // namespace quorin

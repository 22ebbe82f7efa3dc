#include "worker/delete_request.h"

#include "http/header_map.h"
#include "http/header_names.h"
#include "log/application_logger.h"
#include "worker/access_line.h"
#include "worker/notification_reset.h"
#include "worker/reply.h"
#include "worker/request_failure.h"
#include "worker/worker_context.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

[[noreturn]] void refuse(WorkerContext& worker, const QString& text) {
    replyStatus(*worker.socket, "500", {});
    failRequest(text);
}

} // namespace

void deleteRequest(WorkerContext& worker, const QFileInfo& fileInfo,
                   const http::HeaderMap& headers) {
    if (!headers.contains(http::kNotificationResetDate)) {
        refuse(worker, u"invalid delete request."_s);
    }
    const QString resetDate = QString::fromStdString(headers.get(http::kNotificationResetDate));
    if (!resetNotification(fileInfo.filePath(), resetDate)) {
        refuse(worker, u"failed to initialize file (" + fileInfo.fileName() + u").");
    }
    writeSocket(*worker.socket, makeResponse("204", {}));
    worker.responseStarted = true;
    worker.requestEnd = QDateTime::currentDateTime();
    QuorinGatewayApplicationLogger::logInfo(accessLine(worker, u"204"));
}

} // namespace quorin

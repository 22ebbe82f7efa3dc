#include "handlers/delete_request.h"

#include "handlers/access_line.h"
#include "handlers/notification_reset.h"
#include "handlers/refusal.h"
#include "handlers/reply.h"
#include "handlers/request_context.h"
#include "http/header_map.h"
#include "http/header_names.h"
#include "log/log.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace quorin {

void deleteRequest(RequestContext& context, const QFileInfo& fileInfo,
                   const http::HeaderMap& headers) {
    if (!headers.contains(http::kNotificationResetDate)) {
        refuse(context, http::Status::InternalServerError, u"invalid delete request."_s);
    }
    const QString resetDate = QString::fromStdString(headers.get(http::kNotificationResetDate));
    if (!resetNotification(fileInfo.filePath(), resetDate)) {
        refuse(context, http::Status::InternalServerError,
               u"failed to initialize file (" + fileInfo.fileName() + u").");
    }
    writeSocket(*context.socket, makeResponse(http::Status::NoContent));
    context.responseStarted = true;
    context.requestEnd = QDateTime::currentDateTime();
    log::info(accessLine(context, u"204"));
}

} // namespace quorin

#include "handlers/access_line.h"

#include "handlers/request_context.h"

namespace quorin {

QString accessLine(const RequestContext& context, QStringView status) {
    const QString target = context.requestUrl.url(QUrl::RemoveScheme).mid(1);
    const qint64 duration = context.requestStart.msecsTo(context.requestEnd);
    return context.methodText + u' ' + target + u" - - " + context.remoteAddressText + u' ' +
           status + u' ' + QString::number(duration);
}

} // namespace quorin

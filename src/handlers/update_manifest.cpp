#include "handlers/update_manifest.h"

#include "handlers/path_limit.h"
#include "handlers/request_context.h"
#include "log/log.h"

#include <QDir>
#include <QFileInfo>
#include <QHostAddress>

namespace quorin {

void selectUpdateManifest(const RequestContext& context, QFileInfo& fileInfo) {
    log::debug([&context]() -> QString {
        return u"Received requesting update.json from " + context.remoteAddressText;
    });
    const QString variant = fileInfo.absolutePath() + u'/' + fileInfo.baseName() + u'_' +
                            context.socket->localAddress().toString() + u'.' +
                            fileInfo.completeSuffix();
    if (variant.size() <= kMaxPathLength && QFileInfo::exists(variant)) {
        fileInfo.setFile(variant);
    }
    log::debug(
        [&fileInfo]() -> QString { return u"Response update.json : " + fileInfo.fileName(); });
}

} // namespace quorin

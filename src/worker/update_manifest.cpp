#include "worker/update_manifest.h"

#include "log/application_logger.h"
#include "worker/path_limit.h"
#include "worker/worker_context.h"

#include <QDir>
#include <QFileInfo>
#include <QHostAddress>

namespace quorin {

void selectUpdateManifest(const WorkerContext& worker, QFileInfo& fileInfo) {
    using Logger = QuorinGatewayApplicationLogger;
    Logger::logDebug([&worker]() -> QString {
        return u"Received requesting update.json from " + worker.remoteAddressText;
    });
    const QString variant = fileInfo.absolutePath() + u'/' + fileInfo.baseName() + u'_' +
                            worker.socket->localAddress().toString() + u'.' +
                            fileInfo.completeSuffix();
    if (variant.size() <= kMaxPathLength && QFileInfo::exists(variant)) {
        fileInfo.setFile(variant);
    }
    Logger::logDebug(
        [&fileInfo]() -> QString { return u"Response update.json : " + fileInfo.fileName(); });
}

} // namespace quorin

#include "platform/control_pipe.h"

#include <QLocalServer>

namespace platform {

void prepareControlPipe(QLocalServer& server, const QString& name) {
    QLocalServer::removeServer(name);
    server.setSocketOptions(QLocalServer::UserAccessOption);
}

} // namespace platform

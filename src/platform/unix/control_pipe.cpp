#include "platform/control_pipe.h"

#include <QLocalServer>
#include <QLocalSocket>

#include <sys/socket.h>
#include <unistd.h>

namespace quorin::platform {

void prepareControlPipe(QLocalServer& server, const QString& name) {
    QLocalServer::removeServer(name);
    server.setSocketOptions(QLocalServer::UserAccessOption);
}

bool isServedByThisProcess(const QLocalSocket& pipe) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(static_cast<int>(pipe.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer,
                      &size) == 0 &&
           peer.pid == getpid();
}

} // namespace quorin::platform

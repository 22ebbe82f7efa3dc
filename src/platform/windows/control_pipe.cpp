#include "platform/control_pipe.h"

#include "platform/windows/system.h"

#include <QLocalServer>
#include <QLocalSocket>

namespace quorin::platform {

// A pipe is removed with its process, so there is no stale pipe. The system's default rights apply:
// the gateway's own account, administrators and the local system may write to the pipe.
void prepareControlPipe(QLocalServer& /*server*/, const QString& name) {
    QLocalServer::removeServer(name);
}

QString obstacleToControlPipe(const QString& /*name*/) {
    return {};
}

bool isServedByThisProcess(const QLocalSocket& pipe) {
    ULONG server = 0;
    return GetNamedPipeServerProcessId(reinterpret_cast<HANDLE>(pipe.socketDescriptor()),
                                       &server) != FALSE &&
           server == GetCurrentProcessId();
}

} // namespace quorin::platform

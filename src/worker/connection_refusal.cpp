#include "worker/connection_refusal.h"

#include "handlers/reply.h"
#include "http/response.h"

#include <QDeadlineTimer>
#include <QTcpSocket>

namespace quorin {

void refuseConnection(qintptr descriptor, std::chrono::milliseconds timeout) {
    QTcpSocket socket;
    socket.setSocketDescriptor(descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite);
    socket.waitForReadyRead(static_cast<int>(timeout.count()));

    socket.write(serialized(http::Response(http::Status::ServiceUnavailable)));
    static_cast<void>(flushUntilSent(socket, QDeadlineTimer(timeout)));
    socket.close();
}

} // namespace quorin

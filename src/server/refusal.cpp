#include "server/refusal.h"

#include "http/response.h"

#include <QDeadlineTimer>
#include <QTcpSocket>
#include <QThread>

namespace quorin {

namespace {

constexpr std::int32_t kServiceUnavailable = 503;
constexpr unsigned long kFlushPauseMs = 10;

} // namespace

void refuseConnection(qintptr descriptor, std::chrono::milliseconds timeout) {
    QTcpSocket socket;
    socket.setSocketDescriptor(descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite);
    socket.waitForReadyRead(static_cast<int>(timeout.count()));

    const std::vector<std::uint8_t> reply = http::Response(kServiceUnavailable).serialize();
    socket.write(reinterpret_cast<const char*>(reply.data()), static_cast<qint64>(reply.size()));
    const QDeadlineTimer deadline(timeout);
    while (socket.isValid() && !deadline.hasExpired()) {
        socket.flush();
        if (socket.bytesToWrite() == 0) {
            break;
        }
        QThread::msleep(kFlushPauseMs);
    }
    socket.close();
}

} // namespace quorin

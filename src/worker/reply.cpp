#include "worker/reply.h"

#include "http/header_names.h"
#include "http/response.h"
#include "worker/request_failure.h"

#include <QSslSocket>
#include <QThread>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr unsigned long kFlushPauseMs = 10;

constexpr bool isClientError(int status) {
    return status >= 400 && status < 500;
}

} // namespace

QByteArray serialized(const http::Response& response) {
    QByteArray bytes(static_cast<qsizetype>(response.serializedSize()), Qt::Uninitialized);
    response.serializeTo(bytes.data());
    return bytes;
}

QByteArray makeResponse(QByteArrayView statusText, QByteArrayView body) {
    const int status = statusText.toByteArray().toInt();
    http::Response response(status);
    response.appendBody({body.data(), static_cast<std::size_t>(body.size())});
    if (isClientError(status)) {
        response.headers.set(http::kConnection, "close");
    }
    return serialized(response);
}

qint64 unsentBytes(const QSslSocket& socket) {
    return socket.bytesToWrite() + socket.encryptedBytesToWrite();
}

void writeUnlessGone(QSslSocket& socket, const QByteArray& bytes) {
    if (socket.state() == QAbstractSocket::ConnectedState) {
        socket.write(bytes);
    }
}

void writeSocket(QSslSocket& socket, const QByteArray& bytes, std::chrono::milliseconds timeout) {
    writeUnlessGone(socket, bytes);
    const QDeadlineTimer deadline(timeout);
    while (socket.isValid() && !deadline.hasExpired()) {
        socket.flush();
        if (unsentBytes(socket) == 0) {
            return;
        }
        QThread::msleep(kFlushPauseMs);
    }
    failRequest(u"Failed to write socket data."_s);
}

void replyStatus(QSslSocket& socket, QByteArrayView statusText, QByteArrayView body) {
    writeSocket(socket, makeResponse(statusText, body));
}

void waitUntilSent(QSslSocket& socket, const QDeadlineTimer& deadline) {
    // One call returns after a part has left; false means that no more will.
    while (unsentBytes(socket) > 0 && !deadline.hasExpired() &&
           socket.waitForBytesWritten(static_cast<int>(deadline.remainingTime()))) {
    }
}

} // namespace quorin

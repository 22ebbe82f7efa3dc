#include "handlers/reply.h"

#include "handlers/request_failure.h"
#include "http/header_names.h"
#include "http/response.h"
#include "platform/direct_send.h"
#include "platform/pause.h"

#include <QSslSocket>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr std::chrono::milliseconds kFlushInterval{10};

constexpr bool isClientError(http::Status status) {
    return status >= http::Status{400} && status < http::Status{500};
}

bool isConnectedPlain(const QSslSocket& socket) {
    return socket.mode() == QSslSocket::UnencryptedMode &&
           socket.state() == QAbstractSocket::ConnectedState;
}

} // namespace

QByteArray serialized(const http::Response& response) {
    QByteArray bytes(static_cast<qsizetype>(response.serializedSize()), Qt::Uninitialized);
    response.serializeTo(bytes.data());
    return bytes;
}

QByteArray makeResponse(http::Status status, QByteArrayView body) {
    http::Response response(status);
    response.appendBody({body.data(), static_cast<std::size_t>(body.size())});
    if (isClientError(status)) {
        response.headers.set(http::kConnection, "close");
    }
    return serialized(response);
}

qint64 unsentBytes(const QAbstractSocket& socket) {
    const auto* const tls = qobject_cast<const QSslSocket*>(&socket);
    return socket.bytesToWrite() + (tls == nullptr ? 0 : tls->encryptedBytesToWrite());
}

void writeIfConnected(QAbstractSocket& socket, const QByteArray& bytes) {
    if (socket.state() == QAbstractSocket::ConnectedState) {
        socket.write(bytes);
    }
}

bool flushUntilSent(QAbstractSocket& socket, const QDeadlineTimer& deadline) {
    while (socket.isValid() && !deadline.hasExpired()) {
        socket.flush();
        if (unsentBytes(socket) == 0) {
            return true;
        }
        platform::pause(kFlushInterval);
    }
    return false;
}

void writeSocket(QSslSocket& socket, const QByteArray& bytes, std::chrono::milliseconds timeout) {
    writeIfConnected(socket, bytes);
    if (!flushUntilSent(socket, QDeadlineTimer(timeout))) {
        failRequest(u"Failed to write socket data."_s);
    }
}

void replyStatus(QSslSocket& socket, http::Status status) {
    writeSocket(socket, makeResponse(status));
}

void waitUntilSent(QSslSocket& socket, const QDeadlineTimer& deadline) {
    // Each call returns after a partial write, or false if no more can be sent.
    while (unsentBytes(socket) > 0 && !deadline.hasExpired() &&
           socket.waitForBytesWritten(static_cast<int>(deadline.remainingTime()))) {
    }
}

void sendPiece(QSslSocket& socket, const QByteArray& bytes, const QDeadlineTimer& deadline) {
    if (isConnectedPlain(socket)) {
        const qint64 sent = platform::sendDirectly(socket.socketDescriptor(), bytes, deadline);
        if (sent < bytes.size()) {
            socket.write(bytes.constData() + sent, bytes.size() - sent);
        }
    } else {
        writeIfConnected(socket, bytes);
    }
    waitUntilSent(socket, deadline);
}

} // namespace quorin

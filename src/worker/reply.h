#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDeadlineTimer>

#include <chrono>

class QAbstractSocket;
class QSslSocket;

namespace quorin::http {
struct Response;
}

// The way of every reply to the client. A reply counts as sent when the system has all its bytes,
// encrypted ones included: what the system has, it delivers also after the worker is gone.
namespace quorin {

// How long a reply, or a chunk of a file, may take to leave.
inline constexpr std::chrono::seconds kSendTimeout{30};

// The bytes of a reply with the status `statusText`, which is a number, and the UTF-8 text `body`.
// Statuses from 400 to 499 announce that the connection closes; others do not.
[[nodiscard]] QByteArray makeResponse(QByteArrayView statusText, QByteArrayView body);

// The bytes of `response`.
[[nodiscard]] QByteArray serialized(const http::Response& response);

// Hands `bytes` to `socket`, unless its peer has gone: then they are lost like those that were
// under way, and Qt would complain of them on the standard error output. Over TLS the
// socket shares `bytes` until they are encrypted, and copies nothing.
void writeUnlessGone(QSslSocket& socket, const QByteArray& bytes);

// Sends `bytes`, looking every 10 ms whether they have left. Throws a GatewayException of kind
// Request when they have not after `timeout`, or the socket is of no use. A peer that goes
// meanwhile takes its bytes along and is no failure; the socket's disconnected() tells of it.
void writeSocket(QSslSocket& socket, const QByteArray& bytes,
                 std::chrono::milliseconds timeout = kSendTimeout);

// Sends the reply that makeResponse() makes; throws as writeSocket() does.
void replyStatus(QSslSocket& socket, QByteArrayView statusText, QByteArrayView body);

// Bytes written to `socket` that the system does not have yet.
[[nodiscard]] qint64 unsentBytes(const QSslSocket& socket);

// Waits until the system has all that was written to `socket`, until the deadline or until the
// peer has gone, which the caller learns from the socket's disconnected().
void waitUntilSent(QSslSocket& socket, const QDeadlineTimer& deadline = kSendTimeout);

} // namespace quorin

#pragma once

#include "http/status.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QDeadlineTimer>

#include <chrono>

class QAbstractSocket;
class QSslSocket;

namespace quorin::http {
struct Response;
}

// Sends replies. A reply counts as sent when the system has all its bytes, including those that
// TLS adds: it delivers them even after the worker is deleted. Call each function on the thread of
// its socket.
namespace quorin {

// The time limit for sending a reply or a chunk of a file.
inline constexpr std::chrono::seconds kSendTimeout{30};

// Returns the bytes of a reply with the UTF-8 text `body`. A status from 400 to 499 gets the header
// "Connection: close"; others do not.
[[nodiscard]] QByteArray makeResponse(http::Status status, QByteArrayView body = {});

// Returns the bytes of `response`.
[[nodiscard]] QByteArray serialized(const http::Response& response);

// Writes `bytes` to the socket's buffer if it is connected. Writing to a disconnected socket would
// make Qt print a warning. Over TLS the socket shares `bytes` until they are encrypted.
void writeIfConnected(QAbstractSocket& socket, const QByteArray& bytes);

// Sends `bytes`, checking every 10 ms whether they have been sent. Throws a GatewayException of
// kind Request if the socket becomes invalid or `timeout` expires first. If the peer disconnects,
// the bytes are lost without an error; the socket's disconnected() reports it.
void writeSocket(QSslSocket& socket, const QByteArray& bytes,
                 std::chrono::milliseconds timeout = kSendTimeout);

// Sends makeResponse(status); throws as writeSocket() does.
void replyStatus(QSslSocket& socket, http::Status status);

// Flushes `socket` every 10 ms until it is sent completely. Returns false if the socket becomes
// invalid or the deadline expires first.
[[nodiscard]] bool flushUntilSent(QAbstractSocket& socket, const QDeadlineTimer& deadline);

// Sends `bytes` and waits until all are sent, the deadline expires or the peer disconnects. What is
// not sent then is in the buffer of `socket`. Bypasses that buffer, which must be empty, as far as
// possible: over plain TCP, nothing is copied while the peer only reads.
void sendPiece(QSslSocket& socket, const QByteArray& bytes, const QDeadlineTimer& deadline);

// Returns the number of bytes in the buffers of `socket` that the system has not taken yet.
[[nodiscard]] qint64 unsentBytes(const QAbstractSocket& socket);

// Waits until all bytes written to `socket` are sent, the deadline expires or the peer disconnects.
// The last is reported by the socket's disconnected().
void waitUntilSent(QSslSocket& socket, const QDeadlineTimer& deadline = kSendTimeout);

} // namespace quorin

#pragma once

#include <QtGlobal>

class QSslSocket;

namespace quorin {

// Discards bytes that the client has sent after its request, until none are left or at least
// `limit` bytes are discarded. Without this, closing the connection would reset it, and the client
// could lose the end of its reply. Does nothing over TLS: there waitForReadyRead(0) does not return
// while records without data arrive, such as key updates. Call on the thread of the socket.
void discardUnread(QSslSocket& socket, qint64 limit);

} // namespace quorin

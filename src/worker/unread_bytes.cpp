#include "worker/unread_bytes.h"

#include <QSslSocket>

namespace quorin {

void discardUnread(QSslSocket& socket, qint64 limit) {
    if (socket.mode() != QSslSocket::UnencryptedMode) {
        return;
    }
    qint64 discarded = 0;
    while (socket.state() == QAbstractSocket::ConnectedState && discarded < limit) {
        discarded += socket.skip(socket.bytesAvailable());
        if (!socket.waitForReadyRead(0)) {
            break;
        }
    }
}

} // namespace quorin

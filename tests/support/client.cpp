#include "support/client.h"

#include "support/deadline.h"

#include <gtest/gtest.h>

namespace quorin::test {

Client::Client(quint16 port, Transport transport, const QHostAddress& address) {
    const bool connected = waitUntil([&] {
        socket_.connectToHost(address, port);
        return socket_.waitForConnected(kTestTimeoutMs);
    });
    EXPECT_TRUE(connected) << socket_.errorString().toStdString();
    if (transport == Transport::Tls) {
        socket_.setPeerVerifyMode(QSslSocket::VerifyNone);
        socket_.startClientEncryption();
        EXPECT_TRUE(socket_.waitForEncrypted(kTestTimeoutMs))
            << socket_.errorString().toStdString();
    }
}

void Client::send(const QByteArray& bytes) {
    socket_.write(bytes);
    while (socket_.bytesToWrite() > 0 || socket_.encryptedBytesToWrite() > 0) {
        if (!socket_.waitForBytesWritten(kTestTimeoutMs)) {
            break;
        }
    }
}

QByteArray Client::readToEnd() {
    QByteArray received = socket_.readAll();
    while (socket_.state() == QAbstractSocket::ConnectedState || socket_.bytesAvailable() > 0) {
        if (socket_.bytesAvailable() == 0 && !socket_.waitForReadyRead(kTestTimeoutMs) &&
            socket_.bytesAvailable() == 0) {
            break;
        }
        received += socket_.readAll();
    }
    EXPECT_NE(socket_.error(), QAbstractSocket::SocketTimeoutError)
        << "the gateway did not close the connection";
    return received;
}

QByteArray Client::read(qint64 count) {
    QByteArray received;
    while (received.size() < count) {
        if (socket_.bytesAvailable() == 0 && !socket_.waitForReadyRead(kTestTimeoutMs) &&
            socket_.bytesAvailable() == 0) {
            break;
        }
        received += socket_.read(count - received.size());
    }
    return received;
}

bool Client::waitForDisconnected() {
    return socket_.state() == QAbstractSocket::UnconnectedState ||
           socket_.waitForDisconnected(kTestTimeoutMs);
}

QByteArray exchange(quint16 port, const QByteArray& request, Transport transport) {
    Client client(port, transport);
    client.send(request);
    return client.readToEnd();
}

QByteArray get(const QByteArray& target) {
    return "GET " + target + " HTTP/1.1\r\n\r\n";
}

} // namespace quorin::test

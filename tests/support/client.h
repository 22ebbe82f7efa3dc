#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QSslSocket>

#include <chrono>

namespace quorin::test {

enum class Transport { Plain, Tls };

// A client that exchanges raw bytes with a gateway over one connection. All calls block, for
// kTestTimeout at most; a call that times out ends with what has arrived so far.
class Client {
public:
    // Retries until the port accepts the connection, then completes the TLS handshake if TLS is
    // requested. Adds a test failure if either fails.
    explicit Client(quint16 port, Transport transport = Transport::Plain,
                    const QHostAddress& address = QHostAddress(QHostAddress::LocalHost));

    [[nodiscard]] bool isConnected() const {
        return socket_.state() == QAbstractSocket::ConnectedState;
    }

    // Returns when the system has taken all bytes.
    void send(const QByteArray& bytes);

    // All bytes until the gateway closes the connection.
    [[nodiscard]] QByteArray readToEnd();
    // Exactly `count` bytes, or fewer if the connection ends first.
    [[nodiscard]] QByteArray read(qint64 count);

    // Limits what is buffered ahead of read(); 0 removes the limit.
    void limitReadAhead(qint64 bytes) { socket_.setReadBufferSize(bytes); }

    // Closes without sending close_notify.
    void abort() { socket_.abort(); }

    [[nodiscard]] bool waitForDisconnected();
    [[nodiscard]] QSslSocket& socket() { return socket_; }

private:
    QSslSocket socket_;
};

// The reply to one request on a connection of its own.
[[nodiscard]] QByteArray exchange(quint16 port, const QByteArray& request,
                                  Transport transport = Transport::Plain);

// A GET request without headers.
[[nodiscard]] QByteArray get(const QByteArray& target);

} // namespace quorin::test

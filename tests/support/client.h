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

    // Sends `bytes` and returns when the system has taken all of them.
    void send(const QByteArray& bytes);

    // Returns all bytes until the gateway closes the connection.
    [[nodiscard]] QByteArray readToEnd();
    // Returns exactly `count` bytes, or fewer if the connection ends first.
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

// Sends one request on a connection of its own and returns the reply.
[[nodiscard]] QByteArray exchange(quint16 port, const QByteArray& request,
                                  Transport transport = Transport::Plain);

// Returns a GET request without headers.
[[nodiscard]] QByteArray get(const QByteArray& target);

} // namespace quorin::test

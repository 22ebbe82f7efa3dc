#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QSslSocket>

#include <chrono>

namespace quorin::test {

enum class Transport { Plain, Tls };

// A workstation that talks to a gateway in raw bytes over one connection, in a blocking way.
class Client {
public:
    // Connects, as soon as somebody listens on the port.
    explicit Client(quint16 port, Transport transport = Transport::Plain,
                    const QHostAddress& address = QHostAddress(QHostAddress::LocalHost));

    [[nodiscard]] bool isConnected() const {
        return socket_.state() == QAbstractSocket::ConnectedState;
    }

    void send(const QByteArray& bytes);

    // What arrives until the gateway closes the connection.
    [[nodiscard]] QByteArray readToEnd();
    // Exactly `count` bytes, or fewer when the connection ends before.
    [[nodiscard]] QByteArray read(qint64 count);

    // From now on no more than `bytes` are taken in ahead of read().
    void limitReadAhead(qint64 bytes) { socket_.setReadBufferSize(bytes); }

    // Closes without a farewell.
    void abort() { socket_.abort(); }

    [[nodiscard]] bool waitForDisconnected();
    [[nodiscard]] QSslSocket& socket() { return socket_; }

private:
    QSslSocket socket_;
};

// The answer to one request on a connection of its own.
[[nodiscard]] QByteArray exchange(quint16 port, const QByteArray& request,
                                  Transport transport = Transport::Plain);

// A request line with the empty line behind it.
[[nodiscard]] QByteArray get(const QByteArray& target);

} // namespace quorin::test

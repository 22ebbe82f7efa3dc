#pragma once

#include "platform/socket_descriptor.h"
#include "support/client.h"

#include <QTcpServer>

#include <optional>

namespace quorin::test {

// A connection over the loopback interface: a client, and the accepted end as a descriptor, which
// the destructor closes unless the caller took it.
class Loopback {
public:
    explicit Loopback(const QHostAddress& address = QHostAddress(QHostAddress::LocalHost));

    [[nodiscard]] Client& client() noexcept { return *client_; }

    // Transfers ownership of the accepted end. Call once.
    [[nodiscard]] platform::SocketDescriptor takeDescriptor() {
        return std::move(acceptor_.accepted.value());
    }

private:
    class Acceptor : public QTcpServer {
    public:
        std::optional<platform::SocketDescriptor> accepted;

    private:
        void incomingConnection(qintptr descriptor) override { accepted.emplace(descriptor); }
    };

    Acceptor acceptor_;
    std::optional<Client> client_;
};

} // namespace quorin::test

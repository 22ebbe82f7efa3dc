#pragma once

#include "support/client.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace quorin::test {

// Several connections to one gateway, opened one after the other.
class Clients {
public:
    Clients(quint16 port, int count, Transport transport = Transport::Plain);

    // Sends the request on each connection.
    void send(const QByteArray& request);

    // Closes all connections.
    void close() { clients_.clear(); }

    [[nodiscard]] Client& operator[](int index) { return *clients_[std::size_t(index)]; }
    [[nodiscard]] auto begin() const { return clients_.begin(); }
    [[nodiscard]] auto end() const { return clients_.end(); }

private:
    std::vector<std::unique_ptr<Client>> clients_;
};

} // namespace quorin::test

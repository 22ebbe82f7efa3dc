#include "support/clients.h"

namespace quorin::test {

Clients::Clients(quint16 port, int count, Transport transport) {
    for (int i = 0; i < count; ++i) {
        clients_.push_back(std::make_unique<Client>(port, transport));
    }
}

void Clients::send(const QByteArray& request) {
    for (const auto& client : clients_) {
        client->send(request);
    }
}

} // namespace quorin::test

#include "support/free_port.h"

#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QTcpServer>

namespace quorin::test {

FreePort::FreePort() {
    QTcpServer probe;
    probe.setProxy(QNetworkProxy::NoProxy); // Qt would start a thread to find a proxy
    do {
        claim_ = std::make_unique<QUdpSocket>();
        claim_->setProxy(QNetworkProxy::NoProxy);
        // Below the ephemeral ports, so that no connection is given the port in the meantime.
        number_ = quint16(QRandomGenerator::global()->bounded(15000, 32000));
    } while (!claim_->bind(QHostAddress::LocalHost, number_, QUdpSocket::DontShareAddress) ||
             !probe.listen(QHostAddress::AnyIPv4, number_));
}

} // namespace quorin::test

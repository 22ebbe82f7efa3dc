#pragma once

#include "platform/certificate_store.h"

#include <QByteArray>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>

namespace quorin {

// The certificate and private key of the gateway. Both are null if no certificate was found; only
// the key is null if Qt does not support its algorithm.
struct ServerCertificate {
    QSslCertificate certificate;
    QSslKey privateKey;
    // The certificates of the intermediate authorities that the machine has, in the order in which
    // they are sent after `certificate`.
    QList<QSslCertificate> intermediates;
};

// Returns the first certificate for `name` (UTF-8) that is valid now and has an exportable private
// key. Searches the local machine's stores "WebHosting" and "My" in this order and logs each step.
[[nodiscard]] ServerCertificate findServerCertificate(
    const QByteArray& name,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin

#pragma once

#include "platform/certificate_store.h"

#include <QByteArray>
#include <QSslCertificate>
#include <QSslKey>

#include <utility>

namespace quorin {

// The certificate and private key of the gateway. Both are null if no certificate was found; only
// the key is null if Qt does not support its algorithm.
using ServerCertificate = std::pair<QSslCertificate, QSslKey>;

// Returns the first certificate for `name` (UTF-8) that is valid now and has an exportable private
// key. Searches the local machine's stores "WebHosting" and "My" in this order and logs each step.
[[nodiscard]] ServerCertificate findServerCertificate(
    const QByteArray& name,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin

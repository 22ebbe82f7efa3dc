#pragma once

#include "platform/certificate_store.h"

#include <QByteArray>
#include <QSslCertificate>
#include <QSslKey>

#include <utility>

namespace quorin {

// What the gateway shows its clients. Both are null when no certificate was found; the key alone is
// null when it is of a kind that the TLS layer cannot use.
using ServerCertificate = std::pair<QSslCertificate, QSslKey>;

// The machine's first certificate for `name` (UTF-8) that is valid now and whose key the system
// lets out: from the store "WebHosting", else from "My". Every step is logged.
[[nodiscard]] ServerCertificate findServerCertificate(
    const QByteArray& name,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin

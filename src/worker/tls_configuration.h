#pragma once

#include <QSslConfiguration>

class QSslCertificate;
class QSslKey;

namespace quorin {

// Returns the TLS configuration of the server: TLS 1.2 or later with the given certificate and key.
// Both may be null; then every handshake fails. Does not request client certificates, so the
// system's certificate authorities are not loaded.
[[nodiscard]] QSslConfiguration tlsConfiguration(const QSslCertificate& certificate,
                                                 const QSslKey& privateKey);

} // namespace quorin

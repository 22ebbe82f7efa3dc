#pragma once

#include <QList>
#include <QSslCertificate>
#include <QSslConfiguration>

class QSslKey;

namespace quorin {

// Returns the TLS configuration of the server: TLS 1.2 or later with the given certificate and key.
// Both may be null; then every handshake fails. The server sends `intermediates` after
// `certificate`. Does not request client certificates, so the system's certificate authorities are
// not loaded.
[[nodiscard]] QSslConfiguration tlsConfiguration(const QSslCertificate& certificate,
                                                 const QSslKey& privateKey,
                                                 const QList<QSslCertificate>& intermediates = {});

} // namespace quorin

#pragma once

#include <QSslConfiguration>

class QSslCertificate;
class QSslKey;

namespace quorin {

// How the gateway speaks TLS, made once and shared by all workers: TLS 1.2 or later with the given
// certificate and key, which may both be null (then every handshake fails). Peers are not asked
// for certificates, so none of the system's authorities are loaded.
[[nodiscard]] QSslConfiguration tlsConfiguration(const QSslCertificate& certificate,
                                                 const QSslKey& privateKey);

} // namespace quorin

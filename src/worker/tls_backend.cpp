#include "worker/tls_backend.h"

#include <QCoreApplication>
#include <QSslSocket>

using namespace Qt::StringLiterals;

namespace quorin {

std::optional<QString> missingTlsBackend() {
    if (QSslSocket::supportsSsl()) {
        return std::nullopt;
    }
    const QStringList backends = QSslSocket::availableBackends();
    return u"HTTPS is enabled, but Qt has no usable TLS backend (available: "_s +
           (backends.isEmpty() ? u"none"_s : backends.join(u", ")) +
           u"). Install Qt's TLS plugin in the folder \"tls\" of one of these: "_s +
           QCoreApplication::libraryPaths().join(u", ") + u"; and the OpenSSL library it needs."_s;
}

} // namespace quorin

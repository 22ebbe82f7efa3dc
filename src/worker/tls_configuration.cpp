#include "worker/tls_configuration.h"

#include <QSslKey>

namespace quorin {

QSslConfiguration tlsConfiguration(const QSslCertificate& certificate, const QSslKey& privateKey,
                                   const QList<QSslCertificate>& intermediates) {
    QSslConfiguration configuration;
    configuration.setLocalCertificateChain(QList<QSslCertificate>{certificate} + intermediates);
    configuration.setPrivateKey(privateKey);
    configuration.setCaCertificates({});
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    // Otherwise each connection stores its session in the context, which is shared.
    configuration.setSslOption(QSsl::SslOptionDisableSessionSharing, true);
    return configuration;
}

} // namespace quorin

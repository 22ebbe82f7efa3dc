#include "worker/tls_configuration.h"

#include "support/some_certificate.h"

#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>

#include <gtest/gtest.h>

namespace quorin {
namespace {

TEST(TlsConfigurationTest, RequiresTls12AndNoClientCertificate) {
    const QSslConfiguration tls = tlsConfiguration(QSslCertificate(), QSslKey());
    EXPECT_EQ(tls.protocol(), QSsl::TlsV1_2OrLater);
    EXPECT_EQ(tls.peerVerifyMode(), QSslSocket::VerifyNone);
    EXPECT_TRUE(tls.caCertificates().isEmpty());
}

TEST(TlsConfigurationTest, DisablesSessionSharing) {
    const QSslConfiguration tls = tlsConfiguration(QSslCertificate(), QSslKey());
    EXPECT_TRUE(tls.testSslOption(QSsl::SslOptionDisableSessionSharing));
}

TEST(TlsConfigurationTest, AcceptsNullCertificateAndKey) {
    const QSslConfiguration tls = tlsConfiguration(QSslCertificate(), QSslKey());
    EXPECT_TRUE(tls.localCertificate().isNull());
    EXPECT_TRUE(tls.privateKey().isNull());
}

TEST(TlsConfigurationTest, SendsIntermediatesAfterCertificate) {
    const QSslCertificate certificate = test::someCertificate();
    const QSslCertificate intermediate = certificate; // any certificate is accepted
    EXPECT_EQ(tlsConfiguration(certificate, QSslKey(), {intermediate}).localCertificateChain(),
              (QList<QSslCertificate>{certificate, intermediate}));
    EXPECT_EQ(tlsConfiguration(certificate, QSslKey()).localCertificateChain(),
              QList<QSslCertificate>{certificate});
}

} // namespace
} // namespace quorin

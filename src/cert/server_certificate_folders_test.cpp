#include "cert/server_certificate.h"

#include "certificates/test_certificate.h"
#include "platform/unix/certificate_folders.h"
#include "stub_lumetrix/recorded_log.h"

#include <QDir>
#include <QFile>
#include <QSslSocket>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using test::CertificateFields;
using test::KeyKind;
using test::selfSigned;
using test::TestKey;
using testing::Contains;
using testing::ElementsAre;

// Loads real certificates from folders into Qt.
class ServerCertificateFoldersTest : public testing::Test {
protected:
    void write(const QString& name, const QByteArray& bytes) {
        const QString path = folder_.filePath(name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    }

    ServerCertificate find(const QByteArray& name) const {
        return findServerCertificate(name, platform::CertificateFolders(folder_.path()));
    }

    QTemporaryDir folder_;
    test::RecordedLog log_;
};

TEST_F(ServerCertificateFoldersTest, ReturnsUsableCertificateAndKey) {
    const struct {
        KeyKind kind;
        QSsl::KeyAlgorithm algorithm;
        const char* line;
    } cases[] = {{KeyKind::Rsa, QSsl::Rsa, "info: Key Algorithm is RSA."},
                 {KeyKind::EcP256, QSsl::Ec, "info: Key Algorithm is ECDSA."},
                 {KeyKind::EcP384, QSsl::Ec, "info: Key Algorithm is ECDSA."},
                 {KeyKind::Dsa, QSsl::Dsa, "info: Key Algorithm is DSA."}};
    for (const auto& [kind, algorithm, line] : cases) {
        const TestKey key(kind);
        const QByteArray pem = selfSigned(key);
        write(u"My/server.pem"_s, pem);
        write(u"My/server.key"_s, key.traditionalPem());
        const ServerCertificate found = find("LOCALHOST");
        EXPECT_EQ(found.certificate, QSslCertificate(pem));
        EXPECT_FALSE(found.certificate.isNull());
        EXPECT_EQ(found.privateKey, QSslKey(key.pkcs8Pem(), algorithm));
        EXPECT_FALSE(found.privateKey.isNull());
        EXPECT_EQ(found.privateKey.algorithm(), algorithm);
        EXPECT_THAT(log_.lines(), Contains(line));
    }
}

TEST_F(ServerCertificateFoldersTest, KeyOfUnsupportedAlgorithmIsNull) {
    const TestKey key(KeyKind::Ed25519);
    write(u"My/server.pem"_s, selfSigned(key) + key.pkcs8Pem());
    const ServerCertificate found = find("localhost");
    EXPECT_FALSE(found.certificate.isNull());
    EXPECT_TRUE(found.privateKey.isNull());
    EXPECT_THAT(log_.lines(), Contains("info: Key Algorithm is ED25519."));
}

TEST_F(ServerCertificateFoldersTest, LogsWholeSearch) {
    const TestKey key;
    CertificateFields expired;
    expired.notAfter = CertificateFields::currentSecond() - std::chrono::seconds(2);
    expired.serialNumber = "80";
    CertificateFields good;
    good.alternativeNames = "DNS:gateway.example,DNS:localhost";
    good.serialNumber = "AB0001";
    write(u"My/1.pem"_s, "garbage");
    write(u"My/2.pem"_s, selfSigned(key, expired) + key.pkcs8Pem());
    write(u"My/3.pem"_s, selfSigned(key));
    write(u"My/4.pem"_s, selfSigned(key) + key.encryptedPkcs8Pem());
    write(u"My/5.pem"_s, selfSigned(key, good) + key.pkcs8Pem());
    EXPECT_FALSE(find("localhost").privateKey.isNull());
    constexpr const char* kFound01 =
        "info: Found certificate with a matching subject name (Serial Number - 01)";
    EXPECT_THAT(log_.lines(),
                ElementsAre("info: Try to search server certificate that have this name as "
                            "subject alternative names or common name. [localhost]",
                            "error: Failed to open store (WebHosting).",
                            "info: Found certificate with a matching subject name "
                            "(Serial Number - 80)",
                            "warn: This certificate expired.", kFound01,
                            "warn: Failed to get crypt provider handle.", kFound01,
                            "warn: Failed to export private key.",
                            "info: Found certificate with a matching subject name "
                            "(Serial Number - ab0001)",
                            "info: Key Algorithm is ECDSA.",
                            "info: Detect certificate for HTTPS server"));
}

} // namespace
} // namespace quorin

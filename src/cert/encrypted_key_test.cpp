// Keys that the system exports only encrypted.

#include "cert/certificate_doubles.h"
#include "cert/encrypted_keys.h"
#include "cert/search_log.h"
#include "cert/server_certificate.h"
#include "stub_lumetrix/recorded_log.h"
#include "support/some_certificate.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using test::CertificateSpec;
using test::kDetected;
using test::kNotFound;
using test::kNow;
using test::kSearch;
using testing::ElementsAre;
using testing::IsSupersetOf;

constexpr const char* kFound =
    "info: Found certificate with a matching subject name (Serial Number - 01)";
constexpr const char* kNotExported = "warn: Failed to export private key.";
constexpr const char* kExported =
    "info: Exported private key in encrypted form (Serial Number - 01)";

// A certificate for "gateway.example" whose key is exported only as `encrypted`.
CertificateSpec certificate(char serialNumber, const QByteArray& encrypted, const QString& group) {
    CertificateSpec spec;
    spec.dnsNames = {"gateway.example"};
    spec.notBefore = kNow.addDays(-1);
    spec.notAfter = kNow.addDays(1);
    spec.serialNumber = QByteArray(1, serialNumber);
    spec.key->pkcs8.clear();
    spec.key->exportError = platform::SystemError(1, u"plain"_s);
    spec.key->group.value = group;
    spec.key->encryptedPkcs8 = encrypted;
    spec.key->passPhrase = test::passPhrase();
    return spec;
}

// A key that the system does not export at all.
CertificateSpec locked(char serialNumber) {
    CertificateSpec spec = certificate(serialNumber, QByteArray(), u"RSA"_s);
    spec.key->passPhrase.clear();
    spec.key->encryptedExportError = platform::SystemError(2, u"encrypted"_s);
    return spec;
}

class EncryptedKeyTest : public testing::Test {
protected:
    EncryptedKeyTest() {
        system_.now = kNow;
        system_.stores = {{u"WebHosting"_s, {}}, {u"My"_s, {}}};
    }
    ~EncryptedKeyTest() override {
        EXPECT_EQ(system_.liveCounts.certificates, 0);
        EXPECT_EQ(system_.liveCounts.keys, 0);
    }

    CertificateSearch search(const std::vector<CertificateSpec>& webHosting,
                             const std::vector<CertificateSpec>& my = {}) {
        system_.stores = {{u"WebHosting"_s, webHosting}, {u"My"_s, my}};
        return searchServerCertificate("gateway.example", system_);
    }

    test::SystemDouble system_;
    test::RecordedLog log_;
};

TEST_F(EncryptedKeyTest, DecryptsEcKey) {
    CertificateSpec spec = certificate('\1', test::encryptedEcKey(), u"ECDSA"_s);
    spec.der = test::someCertificate().toDer();
    const auto result = search({spec});
    EXPECT_EQ(result.found.certificate, test::someCertificate());
    EXPECT_FALSE(result.found.privateKey.isNull());
    EXPECT_EQ(result.found.privateKey, test::ecKey());
    EXPECT_THAT(log_.lines(), ElementsAre(kSearch, kFound, kNotExported, kNotFound, kExported,
                                          "info: Key Algorithm is ECDSA.", kDetected));
    const ExaminedCertificate& entry = result.stores.at(0).certificates.at(0);
    EXPECT_EQ(entry.verdict, Verdict::AcceptedEncrypted);
    EXPECT_EQ(entry.error.message(), u"plain"_s);
    EXPECT_FALSE(entry.encryptedError);
}

TEST_F(EncryptedKeyTest, DecryptsRsaKey) {
    const auto result = search({certificate('\1', test::encryptedRsaKey(), u"RSA"_s)});
    EXPECT_EQ(result.found.privateKey.algorithm(), QSsl::Rsa);
    EXPECT_EQ(result.found.privateKey.length(), 2048);
}

TEST_F(EncryptedKeyTest, PrefersKeyInPlainInLaterStore) {
    CertificateSpec plain = certificate('\2', QByteArray(), u"RSA"_s);
    plain.key = test::KeySpec();
    search({certificate('\1', test::encryptedEcKey(), u"ECDSA"_s)}, {plain});
    EXPECT_THAT(log_.lines(), ElementsAre(kSearch, kFound, kNotExported,
                                          "info: Found certificate with a matching subject name "
                                          "(Serial Number - 02)",
                                          "info: Key Algorithm is RSA.", kDetected));
}

TEST_F(EncryptedKeyTest, TakesFirstInSearchOrder) {
    const auto result =
        search({locked('\2'), certificate('\1', test::encryptedEcKey(), u"ECDSA"_s)},
               {certificate('\3', test::encryptedRsaKey(), u"RSA"_s)});
    EXPECT_EQ(result.found.privateKey, test::ecKey());
    EXPECT_EQ(result.stores.at(0).certificates.at(0).verdict, Verdict::KeyNotExportable);
    EXPECT_EQ(result.stores.at(0).certificates.at(1).verdict, Verdict::AcceptedEncrypted);
    EXPECT_EQ(result.stores.at(1).certificates.at(0).verdict, Verdict::KeyNotExportable);
}

TEST_F(EncryptedKeyTest, AddsNoLinesIfNotExportable) {
    const auto result = search({locked('\1')});
    EXPECT_THAT(log_.lines(), ElementsAre(kSearch, kFound, kNotExported, kNotFound));
    const ExaminedCertificate& entry = result.stores.at(0).certificates.at(0);
    EXPECT_EQ(entry.verdict, Verdict::KeyNotExportable);
    EXPECT_EQ(entry.error.message(), u"plain"_s);
    EXPECT_EQ(entry.encryptedError.message(), u"encrypted"_s);
}

TEST_F(EncryptedKeyTest, SkipsCertificatesOfOtherVerdicts) {
    CertificateSpec expired = certificate('\1', test::encryptedEcKey(), u"ECDSA"_s);
    expired.notAfter = kNow.addMSecs(-1);
    CertificateSpec other = certificate('\2', test::encryptedEcKey(), u"ECDSA"_s);
    other.dnsNames = {"other.example"};
    CertificateSpec keyless = certificate('\3', test::encryptedEcKey(), u"ECDSA"_s);
    keyless.key.reset();
    const auto result = search({expired, other, keyless});
    EXPECT_TRUE(result.found.privateKey.isNull());
    EXPECT_EQ(log_.lines().back(), kNotFound);
}

TEST_F(EncryptedKeyTest, SkipsKeyThatCannotBeDecrypted) {
    CertificateSpec damaged = certificate('\1', test::encryptedEcKey(), u"ECDSA"_s);
    damaged.key->passPhrase.append('x');
    const auto result = search({damaged}, {certificate('\2', test::encryptedRsaKey(), u"RSA"_s)});
    EXPECT_EQ(result.found.privateKey.algorithm(), QSsl::Rsa);
    EXPECT_EQ(result.stores.at(0).certificates.at(0).verdict, Verdict::KeyNotDecryptable);
    EXPECT_THAT(log_.lines(), IsSupersetOf({kExported, "warn: Failed to decrypt private key."}));
}

TEST_F(EncryptedKeyTest, LogsNoSecret) {
    search({certificate('\1', test::encryptedEcKey(), u"ECDSA"_s)});
    for (const std::string& line : log_.lines()) {
        EXPECT_EQ(line.find(test::passPhrase().toStdString()), std::string::npos) << line;
    }
}

} // namespace
} // namespace quorin

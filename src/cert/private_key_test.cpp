#include "cert/private_key.h"

#include "cert/certificate_doubles.h"
#include "stub_lumetrix/recorded_log.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using platform::Outcome;
using testing::ElementsAre;
using testing::IsEmpty;

class PrivateKeyTest : public testing::Test {
protected:
    ExportedKey exportKey(const std::optional<test::KeySpec>& spec) {
        test::CertificateSpec certificate;
        certificate.key = spec;
        return exportPrivateKey(test::CertificateDouble(certificate, liveCounts_));
    }

    QSsl::KeyAlgorithm algorithmOf(const platform::QueryResult<QString>& group) {
        return keyAlgorithm(test::KeyDouble({"key", group}, liveCounts_));
    }
    QSsl::KeyAlgorithm algorithmOf(const QString& group) {
        return algorithmOf({Outcome::Complete, group});
    }

    test::LiveCounts liveCounts_;
    test::RecordedLog log_;
};

TEST_F(PrivateKeyTest, ExportsKeyWithAlgorithm) {
    const ExportedKey key = exportKey(test::KeySpec());
    EXPECT_TRUE(key.ok());
    EXPECT_EQ(key.keyBytes.view(), "key");
    EXPECT_EQ(key.algorithm, QSsl::Rsa);
    EXPECT_THAT(log_.lines(), ElementsAre("info: Key Algorithm is RSA."));
    EXPECT_EQ(liveCounts_.keys, 0);
}

TEST_F(PrivateKeyTest, ReportsMissingKeyHandle) {
    const ExportedKey key = exportKey(std::nullopt);
    EXPECT_FALSE(key.ok());
    EXPECT_FALSE(key.hasHandle);
    EXPECT_TRUE(key.keyBytes.empty());
    EXPECT_EQ(key.algorithm, QSsl::Opaque);
    EXPECT_THAT(log_.lines(), ElementsAre("warn: Failed to get crypt provider handle."));
}

// The handle was acquired before, for the attempt to export the key unencrypted.
TEST_F(PrivateKeyTest, EncryptedExportNeedsKeyHandle) {
    test::CertificateSpec certificate;
    certificate.key = std::nullopt;
    certificate.keyError = {5, u"access denied"_s};
    const ExportedKey key =
        exportEncryptedPrivateKey(test::CertificateDouble(certificate, liveCounts_));
    EXPECT_FALSE(key.ok());
    EXPECT_FALSE(key.hasHandle);
    EXPECT_EQ(key.error.code(), 5u);
    EXPECT_TRUE(key.passPhrase.empty());
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(PrivateKeyTest, EncryptedExportHasHandleOfRefusedKey) {
    const test::CertificateSpec certificate; // whose key cannot be exported encrypted
    const ExportedKey key =
        exportEncryptedPrivateKey(test::CertificateDouble(certificate, liveCounts_));
    EXPECT_FALSE(key.ok());
    EXPECT_TRUE(key.hasHandle);
}

TEST_F(PrivateKeyTest, ReportsKeyThatIsNotExportable) {
    test::KeySpec refused;
    refused.pkcs8.clear();
    const ExportedKey key = exportKey(refused);
    EXPECT_FALSE(key.ok());
    EXPECT_TRUE(key.hasHandle);
    EXPECT_TRUE(key.keyBytes.empty());
    EXPECT_EQ(key.algorithm, QSsl::Opaque);
    EXPECT_THAT(log_.lines(), ElementsAre("warn: Failed to export private key."));
    EXPECT_EQ(liveCounts_.keys, 0);
}

TEST_F(PrivateKeyTest, ExportsKeyOfUnknownAlgorithm) {
    test::KeySpec spec;
    spec.group = {};
    const ExportedKey key = exportKey(spec);
    EXPECT_TRUE(key.ok());
    EXPECT_EQ(key.keyBytes.view(), "key");
    EXPECT_EQ(key.algorithm, QSsl::Opaque);
    EXPECT_THAT(log_.lines(),
                ElementsAre("error: Failed to get property size. Set key Algorithm to OPAQUE"));
}

TEST_F(PrivateKeyTest, FailureToGetGroupSizeGivesOpaque) {
    EXPECT_EQ(algorithmOf({Outcome::NoSize, {}}), QSsl::Opaque);
    EXPECT_THAT(log_.lines(),
                ElementsAre("error: Failed to get property size. Set key Algorithm to OPAQUE"));
}

TEST_F(PrivateKeyTest, FailureToGetGroupDataGivesOpaque) {
    EXPECT_EQ(algorithmOf({Outcome::NoData, {}}), QSsl::Opaque);
    EXPECT_THAT(log_.lines(),
                ElementsAre("error: Failed to get property data. Set key Algorithm to OPAQUE"));
}

TEST_F(PrivateKeyTest, MapsAndLogsEveryGroup) {
    EXPECT_EQ(algorithmOf(u"RSA"_s), QSsl::Rsa);
    EXPECT_EQ(algorithmOf(u"DH"_s), QSsl::Dh);
    EXPECT_EQ(algorithmOf(u"DSA"_s), QSsl::Dsa);
    EXPECT_EQ(algorithmOf(u"ECDH"_s), QSsl::Ec);
    EXPECT_EQ(algorithmOf(u"ECDSA"_s), QSsl::Ec);
    EXPECT_THAT(log_.lines(),
                ElementsAre("info: Key Algorithm is RSA.", "info: Key Algorithm is DH.",
                            "info: Key Algorithm is DSA.", "info: Key Algorithm is ECDH.",
                            "info: Key Algorithm is ECDSA."));
}

TEST_F(PrivateKeyTest, ComparesGroupExactly) {
    for (const QString& group :
         {u"rsa"_s, u"RSA "_s, u"ECDSA_P256"_s, u"EC"_s, u"ED25519"_s, QString(), u"%1"_s}) {
        EXPECT_EQ(algorithmOf(group), QSsl::Opaque) << group.toStdString();
    }
    EXPECT_THAT(log_.lines(),
                ElementsAre("info: Key Algorithm is rsa.", "info: Key Algorithm is RSA .",
                            "info: Key Algorithm is ECDSA_P256.", "info: Key Algorithm is EC.",
                            "info: Key Algorithm is ED25519.", "info: Key Algorithm is .",
                            "info: Key Algorithm is %1."));
}

TEST_F(PrivateKeyTest, AlgorithmsHaveExpectedValues) {
    EXPECT_EQ(static_cast<std::uint32_t>(QSsl::Opaque), 0u);
    EXPECT_EQ(static_cast<std::uint32_t>(QSsl::Rsa), 1u);
    EXPECT_EQ(static_cast<std::uint32_t>(QSsl::Dsa), 2u);
    EXPECT_EQ(static_cast<std::uint32_t>(QSsl::Ec), 3u);
    EXPECT_EQ(static_cast<std::uint32_t>(QSsl::Dh), 4u);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

} // namespace
} // namespace quorin

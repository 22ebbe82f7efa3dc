#include "check/certificate_check.h"

#include "certificates/test_certificate.h"
#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "platform/unix/certificate_folders.h"
#include "support/print.h"
#include "support/settings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

class CertificateCheckTest : public testing::Test {
protected:
    CertificateCheckTest() {
        EXPECT_TRUE(QDir(folder_.path()).mkpath(u"WebHosting"_s));
        EXPECT_TRUE(QDir(folder_.path()).mkpath(u"My"_s));
        settings_.HttpsEnabled = "true";
        settings_.GatewayAddress = "gateway.example";
    }

    void install(const test::TestKey& key, const test::CertificateFields& fields) const {
        install(test::selfSigned(key, fields) + key.pkcs8Pem());
    }
    void install(const QByteArray& pem) const {
        QFile file(folder_.filePath(u"WebHosting/a.pem"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        file.write(pem);
    }

    // The certificate is valid for this number of complete days and most of another one.
    static test::CertificateFields fieldsForDays(int days) {
        test::CertificateFields fields;
        fields.alternativeNames = "DNS:gateway.example";
        fields.serialNumber = "0AB1";
        fields.notAfter = test::CertificateFields::currentSecond() + std::chrono::days(days + 1) -
                          std::chrono::minutes(1);
        return fields;
    }

    Findings check() const {
        QFile file(folder_.filePath(u"settings.xml"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(settings_.toXml());
        file.close();
        Findings findings;
        checkCertificate(SettingsRecord(file.fileName(), true), findings,
                         platform::CertificateFolders(folder_.path()));
        return findings;
    }

    test::Settings settings_;
    QTemporaryDir folder_;
};

TEST_F(CertificateCheckTest, DescribesCertificate) {
    install(test::TestKey(), fieldsForDays(90));
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Info);
    EXPECT_EQ(findings[0].code, code::kCertificateFound);
    EXPECT_EQ(findings[0].subject, u"gateway.example"_s);
    EXPECT_EQ(findings[0].value, u"0ab1"_s);
    EXPECT_EQ(findings[0].reason, u"certificate with this serial number, valid for 90 more days"_s);
}

TEST_F(CertificateCheckTest, IsSkippedWithoutHttps) {
    settings_.HttpsEnabled = "false";
    EXPECT_TRUE(check().empty());
}

TEST_F(CertificateCheckTest, IsSkippedIfNameIsUnknown) {
    settings_.OrganizationId = "";
    EXPECT_TRUE(check().empty());
}

TEST_F(CertificateCheckTest, ReportsMissingCertificate) {
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Error);
    EXPECT_EQ(findings[0].code, code::kCertificateMissing);
    EXPECT_EQ(findings[0].subject, u"gateway.example"_s);
    EXPECT_EQ(findings[0].reason, u"no usable certificate has this name, so that every TLS "
                                  u"handshake fails: Failed to find valid certificate."_s);
    EXPECT_FALSE(findings[0].failsStart);
}

TEST_F(CertificateCheckTest, GivesReasonOfSearch) {
    test::CertificateFields fields = fieldsForDays(0);
    fields.notAfter = test::CertificateFields::currentSecond() - std::chrono::minutes(1);
    install(test::TestKey(), fields);
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_TRUE(findings[0].reason.endsWith(
        u": Found certificate with a matching subject name (Serial Number - 0ab1); This "
        u"certificate expired.; Failed to find valid certificate."))
        << findings[0].reason.toStdString();
}

TEST_F(CertificateCheckTest, GivesCauseOfSystem) {
    ASSERT_TRUE(QDir(folder_.path()).removeRecursively());
    ASSERT_TRUE(QDir().mkpath(folder_.path()));
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_THAT(findings[0].reason.toStdString(),
                testing::HasSubstr("/My: No such file or directory (0x2)"));
}

TEST_F(CertificateCheckTest, WarnsThirtyDaysBeforeExpiry) {
    install(test::TestKey(), fieldsForDays(30));
    EXPECT_EQ(check().size(), 1u);
    install(test::TestKey(), fieldsForDays(29));
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[1].severity, Severity::Warning);
    EXPECT_EQ(findings[1].code, code::kCertificateExpiring);
    EXPECT_EQ(findings[1].reason, u"the certificate expires in 29 days"_s);
}

TEST_F(CertificateCheckTest, WarnsOfUnknownIssuer) {
    const test::TestAuthority root("root");
    const test::TestAuthority intermediate("intermediate", root);
    const test::TestKey key;
    const QByteArray leaf = key.pkcs8Pem() + intermediate.issue(key, fieldsForDays(90));
    const std::array<std::pair<QByteArray, const char*>, 2> chains{
        {{leaf, "(intermediate)"}, {leaf + intermediate.certificate(), "(root)"}}};
    for (const auto& [pem, issuer] : chains) {
        install(pem);
        const Findings findings = check();
        ASSERT_EQ(findings.size(), 2u) << issuer;
        EXPECT_EQ(findings[1].severity, Severity::Warning);
        EXPECT_EQ(findings[1].code, code::kCertificateChainIncomplete);
        EXPECT_EQ(findings[1].value, u"0ab1"_s);
        EXPECT_THAT(findings[1].reason.toStdString(), testing::HasSubstr(issuer));
        EXPECT_FALSE(findings[1].failsStart);
    }
}

TEST_F(CertificateCheckTest, ReportsUnsupportedKey) {
    install(test::TestKey(test::KeyKind::Ed25519), fieldsForDays(90));
    const Findings findings = check();
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[1].severity, Severity::Error);
    EXPECT_EQ(findings[1].code, code::kCertificateKeyUnusable);
    EXPECT_THAT(findings[1].reason.toStdString(), testing::HasSubstr("Key Algorithm is"));
}

} // namespace
} // namespace quorin::check

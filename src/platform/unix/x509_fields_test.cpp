#include "platform/unix/x509_fields.h"

#include "certificates/test_certificate.h"
#include "platform/unix/pem_text.h"

#include <gmock/gmock.h>

#include <chrono>
#include <utility>

namespace quorin::platform {
namespace {

using quorin::test::CertificateFields;
using quorin::test::selfSigned;
using quorin::test::TestKey;
using testing::ElementsAre;
using namespace std::chrono_literals;

QByteArray pemOf(const CertificateFields& fields) {
    static const TestKey key;
    return selfSigned(key, fields);
}

X509Pointer certificateOf(const CertificateFields& fields) {
    return std::move(certificatesIn(pemOf(fields)).at(0));
}

QDateTime toDateTime(std::chrono::sys_seconds time) {
    return QDateTime::fromSecsSinceEpoch(time.time_since_epoch().count(), Qt::UTC);
}

// Returns the result of serialNumberOf() in hexadecimal.
std::string serialNumberBytes(const std::string& hexadecimal) {
    CertificateFields fields;
    fields.serialNumber = hexadecimal;
    return serialNumberOf(*certificateOf(fields)).toHex().toStdString();
}

TEST(X509FieldsTest, ListsAlternativeDnsNamesInOrder) {
    CertificateFields fields;
    fields.alternativeNames =
        "DNS:two.example,IP:127.0.0.1,DNS:One.Example,email:a@b,DNS:*.example";
    EXPECT_THAT(dnsNamesOf(*certificateOf(fields)),
                ElementsAre("two.example", "One.Example", "*.example"));
}

TEST(X509FieldsTest, CommonNameReplacesMissingDnsNames) {
    EXPECT_THAT(dnsNamesOf(*certificateOf({})), ElementsAre("localhost"));
    CertificateFields fields;
    fields.alternativeNames = "IP:127.0.0.1,email:a@b";
    EXPECT_THAT(dnsNamesOf(*certificateOf(fields)), ElementsAre("localhost"));
}

TEST(X509FieldsTest, AttributeThatIsNoTextIsEmpty) {
    QByteArray der = quorin::test::derFromPem(pemOf({}));
    der.replace("\x0c\x09localhost", "\x30\x09localhost"); // a SEQUENCE instead of a UTF8String
    const auto* position = reinterpret_cast<const unsigned char*>(der.constData());
    const X509Pointer certificate(d2i_X509(nullptr, &position, der.size()));
    ASSERT_TRUE(certificate);
    EXPECT_THAT(dnsNamesOf(*certificate), ElementsAre(""));
    EXPECT_EQ(displayNameOf(*certificate), "");
    EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST(X509FieldsTest, AcceptsEmptySubject) {
    CertificateFields fields;
    fields.subject = {};
    const X509Pointer certificate = certificateOf(fields);
    EXPECT_THAT(dnsNamesOf(*certificate), ElementsAre(""));
    EXPECT_EQ(displayNameOf(*certificate), "");
}

TEST(X509FieldsTest, NamesAreUtf8) {
    CertificateFields fields;
    fields.subject = {{"CN", "r\u00f6ntgen \u2603"}};
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "r\u00f6ntgen \u2603");
}

TEST(X509FieldsTest, DisplayNameIsFirstAvailableAttribute) {
    CertificateFields fields;
    fields.alternativeNames = "DNS:dns.example,email:alternative@example";
    fields.subject = {{"C", "JP"},
                      {"emailAddress", "subject@example"},
                      {"O", "an organisation"},
                      {"OU", "a unit"},
                      {"CN", "a common name"},
                      {"CN", "another"}};
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "a common name");
    fields.subject.resize(4);
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "a unit");
    fields.subject.resize(3);
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "an organisation");
    fields.subject.resize(2);
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "subject@example");
    fields.subject.resize(1);
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "alternative@example");
    fields.alternativeNames = "DNS:dns.example";
    EXPECT_EQ(displayNameOf(*certificateOf(fields)), "JP");
}

TEST(X509FieldsTest, ValidityBoundsAreInUtc) {
    for (const std::chrono::hours offset : {1h, 24h * 365, 24h * 365 * 49, 24h * 365 * 1000}) {
        CertificateFields fields;
        fields.notBefore = CertificateFields::currentSecond() - offset;
        fields.notAfter = CertificateFields::currentSecond() + offset;
        const X509Pointer certificate = certificateOf(fields);
        EXPECT_EQ(notBeforeOf(*certificate), toDateTime(fields.notBefore));
        EXPECT_EQ(notAfterOf(*certificate), toDateTime(fields.notAfter));
        EXPECT_EQ(notBeforeOf(*certificate).timeSpec(), Qt::UTC);
        EXPECT_EQ(notAfterOf(*certificate).timeSpec(), Qt::UTC);
    }
}

TEST(X509FieldsTest, InvalidTimeIsNull) {
    const X509Pointer certificate = certificateOf({});
    ASSERT_EQ(ASN1_STRING_set(X509_getm_notBefore(certificate.get()), "yesterday", -1), 1);
    ASSERT_EQ(ASN1_STRING_set(X509_getm_notAfter(certificate.get()), "", -1), 1);
    EXPECT_TRUE(notBeforeOf(*certificate).isNull());
    EXPECT_TRUE(notAfterOf(*certificate).isNull());
}

TEST(X509FieldsTest, SerialNumberStartsWithLowestByte) {
    EXPECT_EQ(serialNumberBytes("AB0001"), "0100ab");
    EXPECT_EQ(serialNumberBytes("1"), "01");
    EXPECT_EQ(serialNumberBytes("0"), "00");
    EXPECT_EQ(serialNumberBytes("0102030405060708090A0B0C0D0E0F1011121314"),
              "14131211100f0e0d0c0b0a090807060504030201");
}

TEST(X509FieldsTest, SerialNumberHasNoSignByte) {
    EXPECT_EQ(serialNumberBytes("80"), "80");
    EXPECT_EQ(serialNumberBytes("7F"), "7f");
    EXPECT_EQ(serialNumberBytes("FFFF"), "ffff");
    EXPECT_EQ(serialNumberBytes("-80"), "80");
    EXPECT_EQ(serialNumberBytes("-1"), "ff");
}

TEST(X509FieldsTest, ReadsLongSerialNumber) {
    std::string number(400, 'a');
    EXPECT_EQ(serialNumberBytes(number), number);
}

TEST(X509FieldsTest, DerMatchesFile) {
    const QByteArray pem = pemOf({});
    EXPECT_EQ(derOf(*certificatesIn(pem).at(0)), quorin::test::derFromPem(pem));
}

} // namespace
} // namespace quorin::platform

#include "platform/unix/x509_fields.h"

#include "certificates/test_certificate.h"
#include "platform/unix/pem_text.h"

#include <gmock/gmock.h>

#include <chrono>

namespace platform {
namespace {

using quorin::test::CertificateText;
using quorin::test::selfSigned;
using quorin::test::TestKey;
using testing::ElementsAre;
using namespace std::chrono_literals;

QByteArray pemOf(const CertificateText& text) {
    static const TestKey key;
    return selfSigned(key, text);
}

X509Pointer certificateOf(const CertificateText& text) {
    return firstCertificate(pemOf(text));
}

QDateTime asDateTime(std::chrono::sys_seconds time) {
    return QDateTime::fromSecsSinceEpoch(time.time_since_epoch().count(), Qt::UTC);
}

// The serial number's bytes in hexadecimal, the least significant first.
std::string serialOf(const std::string& hexadecimal) {
    CertificateText text;
    text.serialNumber = hexadecimal;
    return serialNumberOf(*certificateOf(text)).toHex().toStdString();
}

TEST(X509FieldsTest, allAlternativeDnsNamesAreListedInTheirOrder) {
    CertificateText text;
    text.alternativeNames = "DNS:two.example,IP:127.0.0.1,DNS:One.Example,email:a@b,DNS:*.example";
    EXPECT_THAT(dnsNamesOf(*certificateOf(text)),
                ElementsAre("two.example", "One.Example", "*.example"));
}

TEST(X509FieldsTest, withoutAlternativeDnsNamesTheCommonNameIsTheDnsName) {
    EXPECT_THAT(dnsNamesOf(*certificateOf({})), ElementsAre("localhost"));
    CertificateText text;
    text.alternativeNames = "IP:127.0.0.1,email:a@b";
    EXPECT_THAT(dnsNamesOf(*certificateOf(text)), ElementsAre("localhost"));
}

TEST(X509FieldsTest, aCertificateMayNameNobody) {
    CertificateText text;
    text.subject = {};
    const X509Pointer certificate = certificateOf(text);
    EXPECT_THAT(dnsNamesOf(*certificate), ElementsAre(""));
    EXPECT_EQ(displayNameOf(*certificate), "");
}

TEST(X509FieldsTest, namesAreUtf8) {
    CertificateText text;
    text.subject = {{"CN", "r\u00f6ntgen \u2603"}};
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "r\u00f6ntgen \u2603");
}

TEST(X509FieldsTest, theNameToShowIsTheFirstThatTheSubjectHas) {
    CertificateText text;
    text.alternativeNames = "DNS:dns.example,email:alternative@example";
    text.subject = {{"C", "JP"},
                    {"emailAddress", "subject@example"},
                    {"O", "an organisation"},
                    {"OU", "a unit"},
                    {"CN", "a common name"},
                    {"CN", "another"}};
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "a common name");
    text.subject.resize(4);
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "a unit");
    text.subject.resize(3);
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "an organisation");
    text.subject.resize(2);
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "subject@example");
    text.subject.resize(1);
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "alternative@example");
    text.alternativeNames = "DNS:dns.example";
    EXPECT_EQ(displayNameOf(*certificateOf(text)), "JP");
}

TEST(X509FieldsTest, theBoundsOfTheValidityAreInUtc) {
    for (const std::chrono::hours distance : {1h, 24h * 365, 24h * 365 * 49, 24h * 365 * 1000}) {
        CertificateText text;
        text.notBefore = CertificateText::thisSecond() - distance;
        text.notAfter = CertificateText::thisSecond() + distance;
        const X509Pointer certificate = certificateOf(text);
        EXPECT_EQ(notBeforeOf(*certificate), asDateTime(text.notBefore));
        EXPECT_EQ(notAfterOf(*certificate), asDateTime(text.notAfter));
        EXPECT_EQ(notBeforeOf(*certificate).timeSpec(), Qt::UTC);
        EXPECT_EQ(notAfterOf(*certificate).timeSpec(), Qt::UTC);
    }
}

TEST(X509FieldsTest, aBoundThatIsNoTimeIsNull) {
    const X509Pointer certificate = certificateOf({});
    ASSERT_EQ(ASN1_STRING_set(X509_getm_notBefore(certificate.get()), "yesterday", -1), 1);
    ASSERT_EQ(ASN1_STRING_set(X509_getm_notAfter(certificate.get()), "", -1), 1);
    EXPECT_TRUE(notBeforeOf(*certificate).isNull());
    EXPECT_TRUE(notAfterOf(*certificate).isNull());
}

TEST(X509FieldsTest, theLeastSignificantByteOfASerialNumberComesFirst) {
    EXPECT_EQ(serialOf("AB0001"), "0100ab");
    EXPECT_EQ(serialOf("1"), "01");
    EXPECT_EQ(serialOf("0"), "00");
    EXPECT_EQ(serialOf("0102030405060708090A0B0C0D0E0F1011121314"),
              "14131211100f0e0d0c0b0a090807060504030201");
}

TEST(X509FieldsTest, aSerialNumberHasNoByteForItsSignAlone) {
    EXPECT_EQ(serialOf("80"), "80");
    EXPECT_EQ(serialOf("7F"), "7f");
    EXPECT_EQ(serialOf("FFFF"), "ffff");
    EXPECT_EQ(serialOf("-80"), "80");
    EXPECT_EQ(serialOf("-1"), "ff");
}

TEST(X509FieldsTest, aSerialNumberMayBeLongerThanItsLengthByteSays) {
    std::string number(400, 'a');
    EXPECT_EQ(serialOf(number), number);
}

TEST(X509FieldsTest, theEncodingIsThatOfTheFile) {
    const QByteArray pem = pemOf({});
    EXPECT_EQ(derOf(*firstCertificate(pem)), quorin::test::decoded(pem));
}

} // namespace
} // namespace platform

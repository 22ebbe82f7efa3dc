#include "cert/server_certificate.h"

#include "cert/certificate_doubles.h"
#include "stub_lumetrix/recorded_log.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using platform::Outcome;
using test::CertificatePlan;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr const char* kSearch = "info: Try to search server certificate that have this name as "
                                "subject alternative names or common name. [gateway.example]";
constexpr const char* kExpired = "warn: This certificate expired.";
constexpr const char* kRsa = "info: Key Algorithm is RSA.";
constexpr const char* kDetected = "info: Detect certificate for HTTPS server";
constexpr const char* kNone = "error: Failed to find valid certificate.";

std::string found(const std::string& serialNumber) {
    return "info: Found certificate with a matching subject name (Serial Number - " + serialNumber +
           ")";
}

const QDateTime kNow(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);

// A certificate for "gateway.example" whose serial number is the byte `serialNumber`.
CertificatePlan certificate(char serialNumber) {
    CertificatePlan plan;
    plan.dnsNames = {"gateway.example"};
    plan.notBefore = kNow.addDays(-1);
    plan.notAfter = kNow.addDays(1);
    plan.serialNumber = QByteArray(1, serialNumber);
    return plan;
}

class ServerCertificateTest : public testing::Test {
protected:
    ServerCertificateTest() {
        system_.now = kNow;
        system_.stores = {{u"WebHosting"_s, {}}, {u"My"_s, {}}};
    }
    ~ServerCertificateTest() override {
        EXPECT_EQ(system_.borrowed.stores, 0);
        EXPECT_EQ(system_.borrowed.certificates, 0);
        EXPECT_EQ(system_.borrowed.keys, 0);
    }

    std::vector<CertificatePlan>& webHosting() { return system_.stores[u"WebHosting"_s]; }
    std::vector<CertificatePlan>& my() { return system_.stores[u"My"_s]; }

    std::vector<std::string> linesOfSearch(const QByteArray& name = "gateway.example") {
        const ServerCertificate pair = findServerCertificate(name, system_);
        EXPECT_TRUE(pair.first.isNull()); // these doubles hold nothing that TLS could read
        EXPECT_TRUE(pair.second.isNull());
        return log_.lines();
    }

    // Whether a certificate with these names is one for `name`.
    bool matches(const QByteArray& name, const std::vector<std::string>& dnsNames,
                 const std::string& displayName = {}) {
        CertificatePlan plan = certificate('\1');
        plan.dnsNames = dnsNames;
        plan.displayName = displayName;
        my() = {plan};
        const std::size_t before = log_.lines().size();
        return linesOfSearch(name).size() - before > 2;
    }

    // The last line of a search whose only certificate is valid between these.
    std::string lastLine(const QDateTime& notBefore, const QDateTime& notAfter) {
        CertificatePlan plan = certificate('\1');
        plan.notBefore = notBefore;
        plan.notAfter = notAfter;
        my() = {plan};
        const std::vector<std::string> lines = linesOfSearch();
        return lines.back() == kNone ? *(lines.rbegin() + 1) : lines.back();
    }

    test::SystemDouble system_;
    test::RecordedLog log_;
};

TEST_F(ServerCertificateTest, emptyStoresHoldNoCertificate) {
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, kNone));
}

TEST_F(ServerCertificateTest, storesThatCannotBeOpenedArePassedOver) {
    system_.stores.clear();
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, "error: Failed to open store (WebHosting).",
                                             "error: Failed to open store (My).", kNone));
}

TEST_F(ServerCertificateTest, theSecondStoreIsSearchedWhenTheFirstCannotBeOpened) {
    my() = {certificate('\2')};
    system_.stores.erase(u"WebHosting"_s);
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, "error: Failed to open store (WebHosting).",
                                             found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, theFirstStoreGoesBeforeTheSecond) {
    CertificatePlan newer = certificate('\2');
    newer.notBefore = kNow;
    newer.notAfter = kNow.addYears(10);
    my() = {newer};
    webHosting() = {certificate('\1')};
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, found("01"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, theSecondStoreIsSearchedWhenTheFirstHoldsNone) {
    CertificatePlan other = certificate('\1');
    other.dnsNames = {"other.example"};
    webHosting() = {other};
    my() = {certificate('\2')};
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, ofTwoInOneStoreTheFirstIsTaken) {
    my() = {certificate('\2'), certificate('\1')};
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, anExpiredCertificateIsPassedOver) {
    CertificatePlan expired = certificate('\1');
    expired.notAfter = kNow.addMSecs(-1);
    my() = {expired, certificate('\2')};
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("01"), kExpired, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, theBoundsBelongToTheValidity) {
    EXPECT_EQ(lastLine(kNow, kNow), kDetected);
    EXPECT_EQ(lastLine(kNow.addMSecs(1), kNow.addDays(1)), kExpired);
    EXPECT_EQ(lastLine(kNow.addDays(-1), kNow.addMSecs(-1)), kExpired);
}

TEST_F(ServerCertificateTest, aBoundThatTheSystemCannotExpressLiesInThePast) {
    EXPECT_EQ(lastLine(QDateTime(), kNow.addDays(1)), kDetected);
    EXPECT_EQ(lastLine(kNow.addDays(-1), QDateTime()), kExpired);
}

TEST_F(ServerCertificateTest, aCertificateWithoutAKeyIsPassedOver) {
    CertificatePlan keyless = certificate('\1');
    keyless.key.reset();
    my() = {keyless, certificate('\2')};
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("01"), "warn: Failed to get crypt provider handle.",
                            found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, aCertificateWhoseKeyIsNotLetOutIsPassedOver) {
    CertificatePlan locked = certificate('\1');
    locked.key->pkcs8.clear();
    webHosting() = {locked};
    my() = {certificate('\2')};
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("01"), "warn: Failed to export private key.",
                            found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, whenNoneWillDoThatIsSaidLast) {
    CertificatePlan keyless = certificate('\1');
    keyless.key.reset();
    my() = {keyless};
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, found("01"),
                                             "warn: Failed to get crypt provider handle.", kNone));
}

TEST_F(ServerCertificateTest, aCertificateThatCannotBeEncodedIsTakenAllTheSame) {
    my() = {certificate('\1'), certificate('\2')};
    system_.base64Outcome = [](QByteArrayView) { return Outcome::NoSize; };
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("01"), kRsa, kDetected,
                            "error: Failed to get base64 string size for CERTIFICATE.",
                            "error: Failed to get base64 string size for PRIVATE KEY."));
}

TEST_F(ServerCertificateTest, aKeyThatCannotBeEncodedIsTakenAllTheSame) {
    my() = {certificate('\1')};
    system_.base64Outcome = [](QByteArrayView bytes) {
        return bytes == "key" ? Outcome::NoData : Outcome::Complete;
    };
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("01"), kRsa, kDetected,
                            "error: Failed to get base64 string data for PRIVATE KEY."));
}

TEST_F(ServerCertificateTest, aSerialNumberIsWrittenMostSignificantByteFirst) {
    CertificatePlan plan = certificate('\1');
    plan.serialNumber = QByteArray::fromHex("0100ab");
    my() = {plan};
    EXPECT_THAT(linesOfSearch(), ElementsAre(kSearch, found("ab0001"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, aSerialNumberMayBeEmptyOrOneHighByte) {
    CertificatePlan plan = certificate('\x80');
    plan.key.reset();
    my() = {plan, plan};
    my()[1].serialNumber.clear();
    EXPECT_THAT(linesOfSearch(),
                ElementsAre(kSearch, found("80"), "warn: Failed to get crypt provider handle.",
                            found(""), "warn: Failed to get crypt provider handle.", kNone));
}

TEST_F(ServerCertificateTest, anyOfTheDnsNamesMayMatch) {
    EXPECT_TRUE(matches("gateway.example", {"other.example", "gateway.example"}));
    EXPECT_TRUE(matches("gateway.example", {"", "gateway.example"}));
    EXPECT_FALSE(matches("gateway.example", {"other.example", "another.example"}));
}

TEST_F(ServerCertificateTest, theDisplayNameMayMatchWhenNoDnsNameDoes) {
    EXPECT_TRUE(matches("gateway.example", {"other.example"}, "gateway.example"));
    EXPECT_TRUE(matches("gateway.example", {}, "gateway.example"));
    EXPECT_FALSE(matches("gateway.example", {"other.example"}, "another.example"));
}

TEST_F(ServerCertificateTest, theLetterCaseOfAsciiLettersDoesNotCount) {
    EXPECT_TRUE(matches("Gateway.EXAMPLE", {"gATEWAY.example"}));
    EXPECT_TRUE(matches("gateway", {}, "GATEWAY"));
    EXPECT_TRUE(matches("azAZ", {"AZaz"}));
    EXPECT_FALSE(matches("r\u00f6ntgen", {"r\u00d6ntgen"}));
    EXPECT_TRUE(matches("r\u00f6ntgen", {"R\u00f6NTGEN"}));
    EXPECT_FALSE(matches("`{", {"@["}));
}

TEST_F(ServerCertificateTest, namesMatchAsAWhole) {
    EXPECT_FALSE(matches("gateway.example", {"gateway.exampl", "gateway.example.", "gateway"},
                         "CN=gateway.example"));
    EXPECT_FALSE(matches("gateway.example", {std::string("gateway.example\0.evil", 21)}));
}

TEST_F(ServerCertificateTest, anAsteriskStandsForItselfAlone) {
    EXPECT_FALSE(matches("gateway.example", {"*.example"}));
    EXPECT_TRUE(matches("*.example", {"*.example"}));
}

TEST_F(ServerCertificateTest, anEmptyNameMatchesNothing) {
    EXPECT_FALSE(matches("", {""}, ""));
    EXPECT_FALSE(matches("", {}, "gateway.example"));
}

TEST_F(ServerCertificateTest, theNameIsLoggedAsItStands) {
    EXPECT_THAT(linesOfSearch("r\u00f6ntgen %1 %20"),
                ElementsAre("info: Try to search server certificate that have this name as "
                            "subject alternative names or common name. [r\u00f6ntgen %1 %20]",
                            kNone));
}

} // namespace
} // namespace quorin

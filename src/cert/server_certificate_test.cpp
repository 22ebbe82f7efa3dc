#include "cert/server_certificate.h"

#include "cert/certificate_doubles.h"
#include "cert/search_log.h"
#include "stub_lumetrix/recorded_log.h"
#include "support/some_certificate.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

using platform::Outcome;
using test::CertificateSpec;
using test::kDetected;
using test::kNotFound;
using test::kNow;
using test::kSearch;
using testing::ElementsAre;
using testing::ElementsAreArray;

constexpr const char* kExpired = "warn: This certificate expired.";
constexpr const char* kRsa = "info: Key Algorithm is RSA.";

std::string found(const std::string& serialNumber) {
    return "info: Found certificate with a matching subject name (Serial Number - " + serialNumber +
           ")";
}

// A valid certificate for "gateway.example" with a one-byte serial number.
CertificateSpec certificate(char serialNumber) {
    CertificateSpec spec;
    spec.dnsNames = {"gateway.example"};
    spec.notBefore = kNow.addDays(-1);
    spec.notAfter = kNow.addDays(1);
    spec.serialNumber = QByteArray(1, serialNumber);
    return spec;
}

class ServerCertificateTest : public testing::Test {
protected:
    ServerCertificateTest() {
        system_.now = kNow;
        system_.stores = {{u"WebHosting"_s, {}}, {u"My"_s, {}}};
    }
    ~ServerCertificateTest() override {
        EXPECT_EQ(system_.liveCounts.stores, 0);
        EXPECT_EQ(system_.liveCounts.certificates, 0);
        EXPECT_EQ(system_.liveCounts.keys, 0);
    }

    std::vector<CertificateSpec>& webHosting() { return system_.stores[u"WebHosting"_s]; }
    std::vector<CertificateSpec>& my() { return system_.stores[u"My"_s]; }

    std::vector<std::string> searchLog(const QByteArray& name = "gateway.example") {
        const ServerCertificate result = findServerCertificate(name, system_);
        EXPECT_TRUE(result.certificate.isNull()); // the doubles contain no real certificate
        EXPECT_TRUE(result.privateKey.isNull());
        return log_.lines();
    }

    // Returns true if a certificate with these names matches `name`.
    bool matches(const QByteArray& name, const std::vector<std::string>& dnsNames,
                 const std::string& displayName = {}) {
        CertificateSpec spec = certificate('\1');
        spec.dnsNames = dnsNames;
        spec.displayName = displayName;
        my() = {spec};
        const std::size_t before = log_.lines().size();
        return searchLog(name).size() - before > 2;
    }

    // Returns the log line that reports whether a certificate with this validity period was
    // accepted.
    std::string validityLine(const QDateTime& notBefore, const QDateTime& notAfter) {
        CertificateSpec spec = certificate('\1');
        spec.notBefore = notBefore;
        spec.notAfter = notAfter;
        my() = {spec};
        const std::vector<std::string> lines = searchLog();
        return lines.back() == kNotFound ? *(lines.rbegin() + 1) : lines.back();
    }

    test::SystemDouble system_;
    test::RecordedLog log_;
};

TEST_F(ServerCertificateTest, ReportsEmptyStores) {
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, kNotFound));
}

TEST_F(ServerCertificateTest, SkipsStoresThatCannotBeOpened) {
    system_.stores.clear();
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, "error: Failed to open store (WebHosting).",
                                         "error: Failed to open store (My).", kNotFound));
}

TEST_F(ServerCertificateTest, SearchesSecondStoreIfFirstFailsToOpen) {
    my() = {certificate('\2')};
    system_.stores.erase(u"WebHosting"_s);
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, "error: Failed to open store (WebHosting).",
                                         found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, PrefersFirstStore) {
    CertificateSpec newer = certificate('\2');
    newer.notBefore = kNow;
    newer.notAfter = kNow.addYears(10);
    my() = {newer};
    webHosting() = {certificate('\1')};
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, found("01"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, SearchesSecondStoreIfFirstHasNoMatch) {
    CertificateSpec other = certificate('\1');
    other.dnsNames = {"other.example"};
    webHosting() = {other};
    my() = {certificate('\2')};
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, TakesFirstMatchInStore) {
    my() = {certificate('\2'), certificate('\1')};
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, SkipsExpiredCertificate) {
    CertificateSpec expired = certificate('\1');
    expired.notAfter = kNow.addMSecs(-1);
    my() = {expired, certificate('\2')};
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("01"), kExpired, found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, ValidityPeriodIncludesItsBounds) {
    EXPECT_EQ(validityLine(kNow, kNow), kDetected);
    EXPECT_EQ(validityLine(kNow.addMSecs(1), kNow.addDays(1)), kExpired);
    EXPECT_EQ(validityLine(kNow.addDays(-1), kNow.addMSecs(-1)), kExpired);
}

TEST_F(ServerCertificateTest, TreatsNullBoundAsPast) {
    EXPECT_EQ(validityLine(QDateTime(), kNow.addDays(1)), kDetected);
    EXPECT_EQ(validityLine(kNow.addDays(-1), QDateTime()), kExpired);
}

TEST_F(ServerCertificateTest, SkipsCertificateWithoutKey) {
    CertificateSpec keyless = certificate('\1');
    keyless.key.reset();
    my() = {keyless, certificate('\2')};
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("01"), "warn: Failed to get crypt provider handle.",
                            found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, SkipsCertificateIfKeyIsNotExportable) {
    CertificateSpec locked = certificate('\1');
    locked.key->pkcs8.clear();
    webHosting() = {locked};
    my() = {certificate('\2')};
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("01"), "warn: Failed to export private key.",
                            found("02"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, ReportsFailureLast) {
    CertificateSpec keyless = certificate('\1');
    keyless.key.reset();
    my() = {keyless};
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, found("01"),
                                         "warn: Failed to get crypt provider handle.", kNotFound));
}

TEST_F(ServerCertificateTest, TakesCertificateThatCannotBeEncoded) {
    my() = {certificate('\1'), certificate('\2')};
    system_.base64Outcome = [](QByteArrayView) { return Outcome::NoSize; };
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("01"), kRsa, kDetected,
                            "error: Failed to get base64 string size for CERTIFICATE.",
                            "error: Failed to get base64 string size for PRIVATE KEY."));
}

TEST_F(ServerCertificateTest, TakesKeyThatCannotBeEncoded) {
    my() = {certificate('\1')};
    system_.base64Outcome = [](QByteArrayView bytes) {
        return bytes == "key" ? Outcome::NoData : Outcome::Complete;
    };
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("01"), kRsa, kDetected,
                            "error: Failed to get base64 string data for PRIVATE KEY."));
}

TEST_F(ServerCertificateTest, LogsSerialNumberMostSignificantByteFirst) {
    CertificateSpec spec = certificate('\1');
    spec.serialNumber = QByteArray::fromHex("0100ab");
    my() = {spec};
    EXPECT_THAT(searchLog(), ElementsAre(kSearch, found("ab0001"), kRsa, kDetected));
}

TEST_F(ServerCertificateTest, LogsEmptyAndHighSerialNumbers) {
    CertificateSpec spec = certificate('\x80');
    spec.key.reset();
    my() = {spec, spec};
    my()[1].serialNumber.clear();
    EXPECT_THAT(searchLog(),
                ElementsAre(kSearch, found("80"), "warn: Failed to get crypt provider handle.",
                            found(""), "warn: Failed to get crypt provider handle.", kNotFound));
}

TEST_F(ServerCertificateTest, MatchesAnyDnsName) {
    EXPECT_TRUE(matches("gateway.example", {"other.example", "gateway.example"}));
    EXPECT_TRUE(matches("gateway.example", {"", "gateway.example"}));
    EXPECT_FALSE(matches("gateway.example", {"other.example", "another.example"}));
}

TEST_F(ServerCertificateTest, MatchesDisplayNameIfNoDnsNameMatches) {
    EXPECT_TRUE(matches("gateway.example", {"other.example"}, "gateway.example"));
    EXPECT_TRUE(matches("gateway.example", {}, "gateway.example"));
    EXPECT_FALSE(matches("gateway.example", {"other.example"}, "another.example"));
}

TEST_F(ServerCertificateTest, MatchIgnoresCaseOfAsciiLetters) {
    EXPECT_TRUE(matches("Gateway.EXAMPLE", {"gATEWAY.example"}));
    EXPECT_TRUE(matches("gateway", {}, "GATEWAY"));
    EXPECT_TRUE(matches("azAZ", {"AZaz"}));
    EXPECT_FALSE(matches("r\u00f6ntgen", {"r\u00d6ntgen"}));
    EXPECT_TRUE(matches("r\u00f6ntgen", {"R\u00f6NTGEN"}));
    EXPECT_FALSE(matches("`{", {"@["}));
    EXPECT_FALSE(matches("\xe4", {"\xc4"}));
}

TEST_F(ServerCertificateTest, MatchesWholeNames) {
    EXPECT_FALSE(matches("gateway.example", {"gateway.exampl", "gateway.example.", "gateway"},
                         "CN=gateway.example"));
    EXPECT_FALSE(matches("gateway.example", {std::string("gateway.example\0.evil", 21)}));
}

TEST_F(ServerCertificateTest, AsteriskMatchesOnlyItself) {
    EXPECT_FALSE(matches("gateway.example", {"*.example"}));
    EXPECT_TRUE(matches("*.example", {"*.example"}));
}

TEST_F(ServerCertificateTest, EmptyNameMatchesNothing) {
    EXPECT_FALSE(matches("", {""}, ""));
    EXPECT_FALSE(matches("", {}, "gateway.example"));
}

TEST_F(ServerCertificateTest, LogsNameLiterally) {
    EXPECT_THAT(searchLog("r\u00f6ntgen %1 %20"),
                ElementsAre("info: Try to search server certificate that have this name as "
                            "subject alternative names or common name. [r\u00f6ntgen %1 %20]",
                            kNotFound));
}

TEST_F(ServerCertificateTest, RecordsWhyStoreIsNotOpened) {
    my() = {certificate('\1')};
    system_.stores.erase(u"WebHosting"_s);
    system_.storeError = platform::SystemError(5, u"access is denied"_s);
    const CertificateSearch search = searchServerCertificate("gateway.example", system_);
    ASSERT_EQ(search.stores.size(), 2u);
    EXPECT_EQ(search.stores[0].name, u"WebHosting"_s);
    EXPECT_EQ(search.stores[0].error.code(), 5u);
    EXPECT_EQ(search.stores[0].error.message(), u"access is denied"_s);
    EXPECT_EQ(search.stores[1].name, u"My"_s);
    EXPECT_FALSE(search.stores[1].error);
}

TEST_F(ServerCertificateTest, RecordsVerdictOfEachCertificate) {
    CertificateSpec other = certificate('\1');
    other.dnsNames = {"other.example"};
    CertificateSpec expired = certificate('\2');
    expired.notAfter = kNow.addMSecs(-1);
    CertificateSpec keyless = certificate('\3');
    keyless.key.reset();
    keyless.keyError = platform::SystemError(1, u"no key"_s);
    CertificateSpec locked = certificate('\4');
    locked.key->pkcs8.clear();
    locked.key->exportError = platform::SystemError(2, u"no export"_s);
    webHosting() = {other, expired, keyless};
    my() = {locked, certificate('\5'), certificate('\6')};
    const CertificateSearch search = searchServerCertificate("gateway.example", system_);
    std::vector<std::string> entries;
    for (const ExaminedStore& store : search.stores) {
        for (const ExaminedCertificate& entry : store.certificates) {
            const QString text = store.name + u' ' + entry.serialNumber + u' ' +
                                 QString::number(static_cast<int>(entry.verdict)) + u' ' +
                                 entry.error.message();
            entries.push_back(text.toStdString());
        }
    }
    const auto line = [](const char* start, Verdict verdict, const char* error) {
        return start + std::to_string(static_cast<int>(verdict)) + ' ' + error;
    };
    EXPECT_THAT(entries, ElementsAre(line("WebHosting 01 ", Verdict::OtherName, ""),
                                     line("WebHosting 02 ", Verdict::OutsideValidity, ""),
                                     line("WebHosting 03 ", Verdict::NoKeyHandle, "no key"),
                                     line("My 04 ", Verdict::KeyNotExportable, "no export"),
                                     line("My 05 ", Verdict::Accepted, "")));
}

TEST_F(ServerCertificateTest, RecordsFieldsOfCertificate) {
    CertificateSpec spec = certificate('\1');
    spec.displayName = "shown";
    spec.dnsNames = {"one.example", "r\u00f6ntgen"};
    my() = {spec};
    const CertificateSearch search = searchServerCertificate("gateway.example", system_);
    const ExaminedCertificate& entry = search.stores.at(1).certificates.at(0);
    EXPECT_EQ(entry.subject, u"shown"_s);
    EXPECT_EQ(entry.dnsNames, (QStringList{u"one.example"_s, u"r\u00f6ntgen"_s}));
    EXPECT_EQ(entry.serialNumber, u"01"_s);
    EXPECT_EQ(entry.notBefore, spec.notBefore);
    EXPECT_EQ(entry.notAfter, spec.notAfter);
}

TEST_F(ServerCertificateTest, CollectsIntermediatesUpToUnreadable) {
    CertificateSpec spec = certificate('\1');
    spec.issuers = {certificate('\2')};
    spec.issuers[0].der = test::someCertificate().toDer();
    spec.issuers[0].issuers = {certificate('\3')};
    spec.issuers[0].issuers[0].der = "not a certificate";
    my() = {spec};
    EXPECT_EQ(findServerCertificate("gateway.example", system_).intermediates,
              QList<QSslCertificate>{test::someCertificate()});
    EXPECT_THAT(log_.lines(), ElementsAre(kSearch, found("01"), kRsa, kDetected));
}

} // namespace
} // namespace quorin

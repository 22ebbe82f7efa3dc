#include "cert/certificate_chain.h"

#include "cert/certificate_doubles.h"
#include "cert/search_log.h"

#include <gmock/gmock.h>

#include <string>

namespace quorin {
namespace {

using test::CertificateSpec;
using test::kNow;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// A valid certificate whose DER is `der`.
CertificateSpec certificate(const QByteArray& der, std::vector<CertificateSpec> issuers = {}) {
    CertificateSpec spec;
    spec.der = der;
    spec.notBefore = kNow.addDays(-1);
    spec.notAfter = kNow.addDays(1);
    spec.issuers = std::move(issuers);
    return spec;
}

CertificateSpec root() {
    CertificateSpec spec = certificate("root");
    spec.isSelfSigned = true;
    return spec;
}

class CertificateChainTest : public testing::Test {
protected:
    ~CertificateChainTest() override { EXPECT_EQ(liveCounts_.certificates, 0); }

    std::vector<std::string> chainOf(const CertificateSpec& spec) {
        std::vector<std::string> chain;
        for (const QByteArray& der :
             intermediatesOf(test::CertificateDouble(spec, liveCounts_), kNow)) {
            chain.push_back(der.toStdString());
        }
        return chain;
    }

    test::LiveCounts liveCounts_;
};

TEST_F(CertificateChainTest, IsEmptyWithoutIssuer) {
    EXPECT_THAT(chainOf(certificate("leaf")), IsEmpty());
    EXPECT_THAT(chainOf(root()), IsEmpty());
}

TEST_F(CertificateChainTest, EndsBeforeSelfSignedCertificate) {
    EXPECT_THAT(chainOf(certificate("leaf", {root()})), IsEmpty());
    EXPECT_THAT(chainOf(certificate("leaf", {certificate("a", {root()})})), ElementsAre("a"));
    EXPECT_THAT(chainOf(certificate("leaf", {certificate("a", {certificate("b", {root()})})})),
                ElementsAre("a", "b"));
}

TEST_F(CertificateChainTest, EndsAtUnknownIssuer) {
    EXPECT_THAT(chainOf(certificate("leaf", {certificate("a")})), ElementsAre("a"));
}

TEST_F(CertificateChainTest, TakesFirstUsableIssuer) {
    CertificateSpec expired = certificate("expired");
    expired.notAfter = kNow.addMSecs(-1);
    CertificateSpec future = certificate("future");
    future.notBefore = kNow.addMSecs(1);
    CertificateSpec weak = certificate("weak");
    weak.isWeak = true;
    EXPECT_THAT(chainOf(certificate("leaf", {expired, future, weak})), IsEmpty());
    EXPECT_THAT(
        chainOf(certificate("leaf", {expired, future, weak, certificate("a"), certificate("b")})),
        ElementsAre("a"));
}

TEST_F(CertificateChainTest, StopsAtLoop) {
    const CertificateSpec loop = certificate(
        "leaf", {certificate("a", {certificate("b", {certificate("a", {certificate("c")})})})});
    EXPECT_THAT(chainOf(loop), ElementsAre("a", "b"));
    EXPECT_THAT(chainOf(certificate("leaf", {certificate("leaf", {certificate("a")})})), IsEmpty());
}

TEST_F(CertificateChainTest, LimitsLength) {
    CertificateSpec chain = root();
    for (int i = 0; i < 100; ++i) {
        chain = certificate(QByteArray::number(i), {chain});
    }
    EXPECT_THAT(chainOf(chain), SizeIs(kMaxIntermediates));
}

} // namespace
} // namespace quorin

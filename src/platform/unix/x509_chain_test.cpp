#include "platform/unix/x509_chain.h"

#include "certificates/test_certificate.h"
#include "platform/unix/pem_text.h"
#include "platform/unix/x509_fields.h"

#include <gtest/gtest.h>

#include <utility>

namespace quorin::platform {
namespace {

using quorin::test::CertificateFields;
using quorin::test::KeyKind;
using quorin::test::selfSigned;
using quorin::test::TestAuthority;
using quorin::test::TestKey;

X509Pointer certificate(const QByteArray& pem) {
    return std::move(certificatesIn(pem).at(0));
}

TEST(X509ChainTest, IssuerHasNameAndSignature) {
    const TestAuthority root("root");
    const TestAuthority namesake("root");
    const TestAuthority other("other");
    const X509Pointer issued = certificate(root.issue(TestKey()));
    EXPECT_TRUE(hasIssued(*certificate(root.certificate()), *issued));
    EXPECT_FALSE(hasIssued(*certificate(namesake.certificate()), *issued));
    EXPECT_FALSE(hasIssued(*certificate(other.certificate()), *issued));
    EXPECT_FALSE(hasIssued(*issued, *certificate(root.certificate())));
}

TEST(X509ChainTest, DetectsSelfSignedCertificate) {
    const TestAuthority root("root");
    EXPECT_TRUE(isSelfSigned(*certificate(root.certificate())));
    EXPECT_TRUE(isSelfSigned(*certificate(selfSigned(TestKey()))));
    EXPECT_FALSE(isSelfSigned(*certificate(root.issue(TestKey()))));
}

TEST(X509ChainTest, WeakMeansUnacceptableToOpenssl) {
    EXPECT_FALSE(isWeak(*certificate(selfSigned(TestKey(KeyKind::Rsa)))));
    EXPECT_FALSE(isWeak(*certificate(selfSigned(TestKey(KeyKind::EcP256)))));
    EXPECT_FALSE(isWeak(*certificate(selfSigned(TestKey(KeyKind::Ed25519)))));
    CertificateFields sha1;
    sha1.digest = "SHA1";
    EXPECT_TRUE(isWeak(*certificate(selfSigned(TestKey(), sha1))));
    EXPECT_TRUE(isWeak(*certificate(selfSigned(TestKey(KeyKind::Dsa))))); // 1024 bits
}

TEST(X509ChainTest, UnknownAuthorityIsNotFound) {
    const TestAuthority root("an authority that no system has");
    const X509Pointer issued = certificate(root.issue(TestKey()));
    EXPECT_TRUE(systemAuthorities(*X509_get_issuer_name(issued.get())).empty());
}

} // namespace
} // namespace quorin::platform

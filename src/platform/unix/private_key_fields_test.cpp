#include "platform/unix/private_key_fields.h"

#include "certificates/test_certificate.h"
#include "platform/unix/pem_text.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include <openssl/core_names.h>
#include <openssl/params.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using quorin::test::KeyKind;
using quorin::test::selfSigned;
using quorin::test::TestKey;

TEST(PrivateKeyFieldsTest, AlgorithmGroupHasWindowsName) {
    EXPECT_EQ(algorithmGroupOf(*TestKey(KeyKind::Rsa).get()), u"RSA"_s);
    EXPECT_EQ(algorithmGroupOf(*TestKey(KeyKind::Dsa).get()), u"DSA"_s);
    EXPECT_EQ(algorithmGroupOf(*TestKey(KeyKind::EcP256).get()), u"ECDSA"_s);
    EXPECT_EQ(algorithmGroupOf(*TestKey(KeyKind::EcP384).get()), u"ECDSA"_s);
}

TEST(PrivateKeyFieldsTest, NamesGroupOfDiffieHellmanKey) {
    char group[] = "ffdhe2048";
    const std::array parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group, 0),
        OSSL_PARAM_construct_end()};
    const std::unique_ptr<EVP_PKEY_CTX, OpensslDeleter<EVP_PKEY_CTX_free>> context(
        EVP_PKEY_CTX_new_from_name(nullptr, "DH", nullptr));
    ASSERT_EQ(EVP_PKEY_keygen_init(context.get()), 1);
    ASSERT_EQ(EVP_PKEY_CTX_set_params(context.get(), parameters.data()), 1);
    EVP_PKEY* key = nullptr;
    ASSERT_EQ(EVP_PKEY_generate(context.get(), &key), 1);
    const KeyPointer owner(key);
    EXPECT_EQ(algorithmGroupOf(*key), u"DH"_s);
}

TEST(PrivateKeyFieldsTest, PublicKeyIsNotExported) {
    const std::array<unsigned char, 32> bytes{1};
    const KeyPointer key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes.data(), bytes.size()));
    ASSERT_TRUE(key);
    EXPECT_TRUE(pkcs8Of(*key).empty());
    EXPECT_EQ(ERR_peek_error(), 0u);
}

TEST(PrivateKeyFieldsTest, OtherKeysHaveOpensslTypeName) {
    EXPECT_EQ(algorithmGroupOf(*TestKey(KeyKind::Ed25519).get()), u"ED25519"_s);
}

TEST(PrivateKeyFieldsTest, ExportsAllKeyTypes) {
    for (const KeyKind kind :
         {KeyKind::Rsa, KeyKind::Dsa, KeyKind::EcP256, KeyKind::EcP384, KeyKind::Ed25519}) {
        const TestKey key(kind);
        EXPECT_EQ(pkcs8Of(*key.get()).view(), key.pkcs8Der());
    }
}

TEST(PrivateKeyFieldsTest, MatchesKeyWithItsCertificate) {
    const TestKey key(KeyKind::EcP256);
    const std::vector<X509Pointer> certificates = certificatesIn(selfSigned(key));
    ASSERT_EQ(certificates.size(), 1u);
    const X509Pointer& certificate = certificates.front();
    EXPECT_TRUE(isKeyOf(*certificate, *key.get()));
    ERR_clear_error();
    EXPECT_FALSE(isKeyOf(*certificate, *TestKey(KeyKind::EcP256).get()));
    EXPECT_FALSE(isKeyOf(*certificate, *TestKey(KeyKind::Rsa).get()));
    EXPECT_EQ(ERR_peek_error(), 0u);
}

} // namespace
} // namespace quorin::platform

#pragma once

#include <QByteArray>

#include <openssl/evp.h>

#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorin::test {

enum class KeyKind { Rsa, Dsa, EcP256, EcP384, Ed25519 };

// A new key pair.
class TestKey {
public:
    explicit TestKey(KeyKind kind = KeyKind::EcP256);

    [[nodiscard]] QByteArray pkcs8Der() const;
    [[nodiscard]] QByteArray pkcs8Pem() const;
    [[nodiscard]] QByteArray traditionalPem() const;
    [[nodiscard]] QByteArray encryptedPkcs8Pem() const;
    [[nodiscard]] QByteArray encryptedTraditionalPem() const;

    [[nodiscard]] EVP_PKEY* get() const { return key_.get(); }

private:
    struct Free {
        void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    };

    std::unique_ptr<EVP_PKEY, Free> key_;
};

// What a certificate is to say.
struct CertificateText {
    using Attribute = std::pair<std::string, std::string>; // short name and value

    std::vector<Attribute> subject = {{"CN", "localhost"}};
    // As in the configuration of OpenSSL, such as "DNS:localhost,IP:127.0.0.1"; empty for none.
    std::string alternativeNames;
    std::string serialNumber = "1"; // in hexadecimal
    std::chrono::sys_seconds notBefore = thisSecond() - std::chrono::hours(1);
    std::chrono::sys_seconds notAfter = thisSecond() + std::chrono::hours(1);

    [[nodiscard]] static std::chrono::sys_seconds thisSecond();
};

// A certificate that `key` has signed for itself, in PEM.
[[nodiscard]] QByteArray selfSigned(const TestKey& key, const CertificateText& text = {});

// What the one block of a PEM text holds.
[[nodiscard]] QByteArray decoded(const QByteArray& pem);

} // namespace quorin::test

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

// A newly generated key pair.
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

// The fields of a generated certificate.
struct CertificateFields {
    using Attribute = std::pair<std::string, std::string>; // short name and value

    std::vector<Attribute> subject = {{"CN", "localhost"}};
    // In the syntax of OpenSSL configuration files, such as "DNS:localhost,IP:127.0.0.1", or empty.
    std::string alternativeNames;
    std::string serialNumber = "1"; // in hexadecimal
    std::chrono::sys_seconds notBefore = currentSecond() - std::chrono::hours(1);
    std::chrono::sys_seconds notAfter = currentSecond() + std::chrono::hours(1);

    // Returns the current time, rounded down.
    [[nodiscard]] static std::chrono::sys_seconds currentSecond();
};

// Returns the fields of a certificate for the host `name`.
[[nodiscard]] CertificateFields fieldsForHost(const std::string& name);

// Returns a self-signed certificate for `key` in PEM.
[[nodiscard]] QByteArray selfSigned(const TestKey& key, const CertificateFields& fields = {});

// Returns the decoded content of a PEM text with one block.
[[nodiscard]] QByteArray derFromPem(const QByteArray& pem);

} // namespace quorin::test

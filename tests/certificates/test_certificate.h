#pragma once

#include <QByteArray>
#include <QString>

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
    bool isAuthority = false;
    std::string digest = "SHA256"; // of the signature; not for Ed25519

    // Returns the current time, rounded down.
    [[nodiscard]] static std::chrono::sys_seconds currentSecond();
};

// Returns the fields of a certificate for the host `name`.
[[nodiscard]] CertificateFields fieldsForHost(const std::string& name);

// Returns a self-signed certificate for `key` in PEM.
[[nodiscard]] QByteArray selfSigned(const TestKey& key, const CertificateFields& fields = {});

// A certificate authority with a newly generated key.
class TestAuthority {
public:
    // A root authority, whose certificate is self-signed.
    explicit TestAuthority(const std::string& name) : TestAuthority(fieldsOf(name), nullptr) {}
    // An intermediate authority, whose certificate `issuer` signs with `digest`.
    TestAuthority(const std::string& name, const TestAuthority& issuer,
                  const std::string& digest = "SHA256")
        : TestAuthority(fieldsOf(name, digest), &issuer) {}

    // Returns the certificate of the authority in PEM.
    [[nodiscard]] const QByteArray& certificate() const { return certificate_; }

    // Returns a certificate for `key` in PEM, issued by this authority.
    [[nodiscard]] QByteArray issue(const TestKey& key, const CertificateFields& fields = {}) const;

private:
    TestAuthority(CertificateFields fields, const TestAuthority* issuer);
    static CertificateFields fieldsOf(const std::string& name,
                                      const std::string& digest = "SHA256");

    TestKey key_;
    CertificateFields fields_;
    QByteArray certificate_;
};

// Returns the name under which OpenSSL looks up `certificate`, in PEM, in a folder of authorities.
[[nodiscard]] QString hashedFileName(const QByteArray& certificate);

// Returns the decoded content of a PEM text with one block.
[[nodiscard]] QByteArray derFromPem(const QByteArray& pem);

} // namespace quorin::test

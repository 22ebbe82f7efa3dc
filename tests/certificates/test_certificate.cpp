#include "certificates/test_certificate.h"

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/dsa.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <ctime>
#include <stdexcept>
#include <utility>

namespace quorin::test {

namespace {

template<auto Free>
struct Deleter {
    template<typename Object>
    void operator()(Object* object) const {
        Free(object);
    }
};

template<typename Object, auto Free>
using Owned = std::unique_ptr<Object, Deleter<Free>>;

// Throws the last OpenSSL error if `isOk` is false.
void require(bool isOk) {
    if (!isOk) {
        throw std::runtime_error(ERR_error_string(ERR_get_error(), nullptr));
    }
}

EVP_PKEY* newDsaKey() {
    const Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free> parameters(
        EVP_PKEY_CTX_new_id(EVP_PKEY_DSA, nullptr));
    EVP_PKEY* result = nullptr;
    require(EVP_PKEY_paramgen_init(parameters.get()) == 1 &&
            EVP_PKEY_CTX_set_dsa_paramgen_bits(parameters.get(), 1024) == 1 &&
            EVP_PKEY_paramgen(parameters.get(), &result) == 1);
    const Owned<EVP_PKEY, EVP_PKEY_free> domain(result);
    const Owned<EVP_PKEY_CTX, EVP_PKEY_CTX_free> generator(EVP_PKEY_CTX_new(domain.get(), nullptr));
    result = nullptr;
    require(EVP_PKEY_keygen_init(generator.get()) == 1 &&
            EVP_PKEY_keygen(generator.get(), &result) == 1);
    return result;
}

EVP_PKEY* newKey(KeyKind kind) {
    switch (kind) {
    case KeyKind::Rsa:
        return EVP_RSA_gen(2048);
    case KeyKind::Dsa:
        return newDsaKey();
    case KeyKind::EcP256:
        return EVP_EC_gen("P-256");
    case KeyKind::EcP384:
        return EVP_EC_gen("P-384");
    case KeyKind::Ed25519:
        return EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519");
    }
    return nullptr;
}

// Returns the bytes that `write` writes to a memory BIO.
template<typename Write>
QByteArray collect(Write write) {
    const Owned<BIO, BIO_free_all> bio(BIO_new(BIO_s_mem()));
    require(write(bio.get()) == 1);
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &data);
    return {data, size};
}

std::time_t toTimeT(std::chrono::sys_seconds time) {
    return time.time_since_epoch().count();
}

constexpr char kPassPhrase[] = "a pass phrase";

void setName(X509_NAME* target, const CertificateFields& fields) {
    for (const auto& [name, value] : fields.subject) {
        require(X509_NAME_add_entry_by_txt(target, name.c_str(), MBSTRING_UTF8,
                                           reinterpret_cast<const unsigned char*>(value.data()),
                                           static_cast<int>(value.size()), -1, 0) == 1);
    }
}

void addExtension(X509* certificate, int nid, const char* value) {
    const Owned<X509_EXTENSION, X509_EXTENSION_free> extension(
        X509V3_EXT_conf_nid(nullptr, nullptr, nid, value));
    require(extension != nullptr && X509_add_ext(certificate, extension.get(), -1) == 1);
}

// Returns a certificate for `key` with `fields` in PEM, signed by an issuer.
QByteArray makeCertificate(const TestKey& key, const CertificateFields& fields,
                           const TestKey& issuerKey, const CertificateFields& issuerFields) {
    const Owned<X509, X509_free> certificate(X509_new());
    X509* const x509 = certificate.get();
    require(X509_set_version(x509, X509_VERSION_3) == 1);

    BIGNUM* number = nullptr;
    require(BN_hex2bn(&number, fields.serialNumber.c_str()) != 0);
    const Owned<BIGNUM, BN_free> serialNumber(number);
    require(BN_to_ASN1_INTEGER(number, X509_get_serialNumber(x509)) != nullptr);

    require(ASN1_TIME_set(X509_getm_notBefore(x509), toTimeT(fields.notBefore)) != nullptr);
    require(ASN1_TIME_set(X509_getm_notAfter(x509), toTimeT(fields.notAfter)) != nullptr);
    setName(X509_get_subject_name(x509), fields);
    setName(X509_get_issuer_name(x509), issuerFields);
    require(X509_set_pubkey(x509, key.get()) == 1);

    if (!fields.alternativeNames.empty()) {
        addExtension(x509, NID_subject_alt_name, fields.alternativeNames.c_str());
    }
    if (fields.isAuthority) {
        addExtension(x509, NID_basic_constraints, "critical,CA:TRUE");
        addExtension(x509, NID_key_usage, "critical,keyCertSign,cRLSign");
    }

    // Ed25519 signatures take no separate digest.
    const bool hasOwnDigest = EVP_PKEY_get_base_id(issuerKey.get()) == EVP_PKEY_ED25519;
    require(X509_sign(x509, issuerKey.get(),
                      hasOwnDigest ? nullptr : EVP_get_digestbyname(fields.digest.c_str())) > 0);
    return collect([x509](BIO* bio) { return PEM_write_bio_X509(bio, x509); });
}

} // namespace

TestKey::TestKey(KeyKind kind) : key_(newKey(kind)) {
    require(key_ != nullptr);
}

QByteArray TestKey::pkcs8Der() const {
    return collect([this](BIO* bio) {
        return i2d_PKCS8PrivateKey_bio(bio, get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
}

QByteArray TestKey::pkcs8Pem() const {
    return collect([this](BIO* bio) {
        return PEM_write_bio_PKCS8PrivateKey(bio, get(), nullptr, nullptr, 0, nullptr, nullptr);
    });
}

QByteArray TestKey::traditionalPem() const {
    return collect([this](BIO* bio) {
        return PEM_write_bio_PrivateKey_traditional(bio, get(), nullptr, nullptr, 0, nullptr,
                                                    nullptr);
    });
}

QByteArray TestKey::encryptedPkcs8Pem() const {
    return collect([this](BIO* bio) {
        return PEM_write_bio_PKCS8PrivateKey(bio, get(), EVP_aes_128_cbc(), kPassPhrase,
                                             sizeof kPassPhrase - 1, nullptr, nullptr);
    });
}

QByteArray TestKey::encryptedTraditionalPem() const {
    return collect([this](BIO* bio) {
        return PEM_write_bio_PrivateKey_traditional(
            bio, get(), EVP_aes_128_cbc(), reinterpret_cast<const unsigned char*>(kPassPhrase),
            sizeof kPassPhrase - 1, nullptr, nullptr);
    });
}

std::chrono::sys_seconds CertificateFields::currentSecond() {
    return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

CertificateFields fieldsForHost(const std::string& name) {
    CertificateFields fields;
    fields.subject = {{"CN", name}};
    fields.alternativeNames = "DNS:" + name;
    return fields;
}

QByteArray selfSigned(const TestKey& key, const CertificateFields& fields) {
    return makeCertificate(key, fields, key, fields);
}

TestAuthority::TestAuthority(CertificateFields fields, const TestAuthority* issuer)
    : fields_(std::move(fields)),
      certificate_(issuer != nullptr ? issuer->issue(key_, fields_) : selfSigned(key_, fields_)) {}

CertificateFields TestAuthority::fieldsOf(const std::string& name, const std::string& digest) {
    CertificateFields fields;
    fields.subject = {{"CN", name}};
    fields.isAuthority = true;
    fields.digest = digest;
    return fields;
}

QByteArray TestAuthority::issue(const TestKey& key, const CertificateFields& fields) const {
    return makeCertificate(key, fields, key_, fields_);
}

QString hashedFileName(const QByteArray& certificate) {
    const Owned<BIO, BIO_free_all> bio(
        BIO_new_mem_buf(certificate.constData(), static_cast<int>(certificate.size())));
    const Owned<X509, X509_free> x509(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
    require(x509 != nullptr);
    return QStringLiteral("%1.0").arg(X509_subject_name_hash(x509.get()), 8, 16, QChar(u'0'));
}

QByteArray derFromPem(const QByteArray& pem) {
    const qsizetype begin = pem.indexOf('\n') + 1;
    const qsizetype end = pem.lastIndexOf("-----END");
    return QByteArray::fromBase64(pem.mid(begin, end - begin));
}

} // namespace quorin::test

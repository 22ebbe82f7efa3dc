// Reads arbitrary certificates and keys in PEM. The first byte selects what the rest is: PEM text,
// or the content of one PEM block.
//   - OpenSSL prompts for no pass phrase, and its error queue is empty afterwards.
//   - A certificate is the same after encoding and reading it again, and its serial number has no
//     sign byte.
//   - A key is the same after exporting and reading it again.

#include "platform/unix/base64_lines.h"
#include "platform/unix/pem_text.h"
#include "platform/unix/private_key_fields.h"
#include "platform/unix/x509_chain.h"
#include "platform/unix/x509_fields.h"
#include "require.h"

#include <QByteArray>

#include <array>
#include <cstdint>
#include <vector>

namespace {

using namespace quorin::platform;

constexpr std::array<const char*, 7> kLabels{nullptr, // PEM text
                                             "CERTIFICATE",     "PRIVATE KEY",
                                             "RSA PRIVATE KEY", "EC PRIVATE KEY",
                                             "DSA PRIVATE KEY", "ENCRYPTED PRIVATE KEY"};

SecretBytes pemBlock(const char* label, QByteArrayView content) {
    return SecretBytes::joined({"-----BEGIN ", label, "-----\n", base64LinesOf(content).view(),
                                "-----END ", label, "-----\n"});
}

void checkCertificate(const X509& certificate) {
    const QByteArray der = derOf(certificate);
    const std::vector<X509Pointer> all = certificatesIn(pemBlock("CERTIFICATE", der).view());
    require(all.size() == 1, "an encoded certificate can be read");
    const X509Pointer& again = all.front();
    require(derOf(*again) == der, "re-encoding gives the same bytes");
    require(dnsNamesOf(*again) == dnsNamesOf(certificate), "the DNS names are the same");
    require(!dnsNamesOf(certificate).empty(), "the list of DNS names is not empty");
    require(displayNameOf(*again) == displayNameOf(certificate), "the display name is the same");
    require(notBeforeOf(*again) == notBeforeOf(certificate), "the start of validity is the same");
    require(notAfterOf(*again) == notAfterOf(certificate), "the end of validity is the same");

    const QByteArray serialNumber = serialNumberOf(certificate);
    require(serialNumber == serialNumberOf(*again), "the serial number is the same");
    require(serialNumber.size() < 2 || serialNumber.back() != 0,
            "the serial number has no sign byte");
}

void checkRelation(X509& certificate, X509& other) {
    (void)hasIssued(other, certificate);
    (void)isSelfSigned(other);
    (void)isWeak(other);
}

void checkKey(const EVP_PKEY& key) {
    require(!algorithmGroupOf(key).isEmpty(), "a key has an algorithm group");
    const SecretBytes pkcs8 = pkcs8Of(key);
    if (pkcs8.empty()) {
        return; // OpenSSL cannot export this key type as PKCS #8
    }
    const auto again = firstPrivateKey(pemBlock("PRIVATE KEY", pkcs8.view()).view()).value;
    require(again && *again, "an exported key can be read");
    require(pkcs8Of(**again).view() == pkcs8.view(), "exporting again gives the same bytes");
    require(algorithmGroupOf(**again) == algorithmGroupOf(key), "the algorithm group is the same");
}

void checkText(QByteArrayView pem) {
    const std::vector<X509Pointer> certificates = certificatesIn(pem);
    const auto [key, error] = firstPrivateKey(pem);
    require(key.has_value() != static_cast<bool>(error), "there is either a key or an error");
    if (key && *key) {
        checkKey(**key);
    }
    for (const X509Pointer& certificate : certificates) {
        checkCertificate(*certificate);
        checkRelation(*certificates.front(), *certificate);
        if (key && *key) {
            (void)isKeyOf(*certificate, **key);
        }
    }
    require(ERR_peek_error() == 0, "the OpenSSL error queue is empty");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const char* const label = kLabels[data[0] % kLabels.size()];
    const QByteArrayView rest(data + 1, static_cast<qsizetype>(size - 1));
    if (label == nullptr) {
        checkText(rest);
    } else {
        checkText(pemBlock(label, rest).view());
    }
    return 0;
}

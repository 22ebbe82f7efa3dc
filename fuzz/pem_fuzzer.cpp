// Certificates and keys in PEM, as an operator may leave them in a folder. The first byte says
// what the others are: PEM text as it stands, or the content of one block. Whatever they are,
//   - nobody is asked for a pass phrase and no error stays in OpenSSL's queue;
//   - a certificate that was read is read from its own encoding as the same certificate, and has a
//     serial number without a byte for its sign alone;
//   - a key that was read is exported, and read from what was exported as the same key.

#include "platform/unix/base64_lines.h"
#include "platform/unix/pem_text.h"
#include "platform/unix/private_key_fields.h"
#include "platform/unix/x509_fields.h"
#include "require.h"

#include <QByteArray>

#include <array>
#include <cstdint>

namespace {

using namespace platform;

constexpr std::array<const char*, 7> kLabels{nullptr, // text as it stands
                                             "CERTIFICATE",     "PRIVATE KEY",
                                             "RSA PRIVATE KEY", "EC PRIVATE KEY",
                                             "DSA PRIVATE KEY", "ENCRYPTED PRIVATE KEY"};

SecretBytes armoured(const char* label, QByteArrayView content) {
    return SecretBytes::joined({"-----BEGIN ", label, "-----\n", base64LinesOf(content).view(),
                                "-----END ", label, "-----\n"});
}

void checkCertificate(const X509& certificate) {
    const QByteArray der = derOf(certificate);
    const X509Pointer again = firstCertificate(armoured("CERTIFICATE", der).view());
    require(again != nullptr, "a certificate's encoding is one");
    require(derOf(*again) == der, "an encoding stays as it is");
    require(dnsNamesOf(*again) == dnsNamesOf(certificate), "so do the DNS names");
    require(!dnsNamesOf(certificate).empty(), "there is a DNS name, empty or not");
    require(displayNameOf(*again) == displayNameOf(certificate), "so does the name to show");
    require(notBeforeOf(*again) == notBeforeOf(certificate), "so does the first bound");
    require(notAfterOf(*again) == notAfterOf(certificate), "so does the second bound");

    const QByteArray serialNumber = serialNumberOf(certificate);
    require(serialNumber == serialNumberOf(*again), "so does the serial number");
    require(serialNumber.size() < 2 || serialNumber.back() != 0, "no byte for the sign alone");
}

void checkKey(const EVP_PKEY& key) {
    require(!algorithmGroupOf(key).isEmpty(), "a key has a group of algorithms");
    const SecretBytes pkcs8 = pkcs8Of(key);
    if (pkcs8.empty()) {
        return; // a kind of key that cannot be written as PKCS #8
    }
    const auto again = firstPrivateKey(armoured("PRIVATE KEY", pkcs8.view()).view());
    require(again && *again, "an exported key is one");
    require(pkcs8Of(**again).view() == pkcs8.view(), "an exported key stays as it is");
    require(algorithmGroupOf(**again) == algorithmGroupOf(key), "so does its group");
}

void checkText(QByteArrayView pem) {
    const X509Pointer certificate = firstCertificate(pem);
    const auto key = firstPrivateKey(pem);
    if (certificate) {
        checkCertificate(*certificate);
    }
    if (key && *key) {
        checkKey(**key);
    }
    if (certificate && key && *key) {
        (void)isKeyOf(*certificate, **key);
    }
    require(ERR_peek_error() == 0, "no error stays in the queue");
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
        checkText(armoured(label, rest).view());
    }
    return 0;
}

#pragma once

#include "platform/unix/openssl.h"

#include <QByteArrayView>

#include <optional>

namespace platform {

// The first certificate in a PEM text, which may hold other things around it; null when there is
// none that can be read.
[[nodiscard]] X509Pointer firstCertificate(QByteArrayView pem);

// A private key as a PEM text has it: null when it is encrypted.
using PemKey = KeyPointer;

// The first private key in a PEM text: PKCS #8, or the traditional form of an RSA, EC or DSA key.
// Nothing when there is none that can be read. Nobody is ever asked for a pass phrase.
[[nodiscard]] std::optional<PemKey> firstPrivateKey(QByteArrayView pem);

} // namespace platform

#pragma once

#include "platform/unix/openssl.h"

#include <QByteArrayView>

#include <optional>

namespace quorin::platform {

// Returns the first certificate in a PEM text, skipping other blocks and text. Returns null if
// there is none or it cannot be decoded.
[[nodiscard]] X509Pointer firstCertificate(QByteArrayView pem);

// A private key in a PEM text. Null if the key is encrypted.
using PemKey = KeyPointer;

// Returns the first private key in a PEM text, in PKCS #8 or the traditional RSA, EC or DSA format.
// Returns nothing if there is none or it cannot be decoded. Never prompts for a pass phrase.
[[nodiscard]] std::optional<PemKey> firstPrivateKey(QByteArrayView pem);

} // namespace quorin::platform

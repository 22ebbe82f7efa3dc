#pragma once

#include "platform/unix/openssl.h"

#include <QByteArrayView>

#include <optional>
#include <vector>

namespace quorin::platform {

// Returns the certificates in a PEM text in their order, skipping other blocks and text. Stops at
// one that cannot be decoded.
[[nodiscard]] std::vector<X509Pointer> certificatesIn(QByteArrayView pem);

// A private key in a PEM text. Null if the key is encrypted.
using PemKey = KeyPointer;

// Returns the first private key in a PEM text, in PKCS #8 or the traditional RSA, EC or DSA format.
// Returns nothing if there is none or it cannot be decoded; the error is that of OpenSSL. Never
// prompts for a pass phrase.
[[nodiscard]] SystemResult<std::optional<PemKey>> firstPrivateKey(QByteArrayView pem);

} // namespace quorin::platform

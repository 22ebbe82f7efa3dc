#pragma once

#include "platform/certificate_store.h"

#include <QSsl>

namespace quorin {

// A private key that the system let out.
struct ExportedKey {
    QSsl::KeyAlgorithm algorithm = QSsl::Opaque;
    platform::SecretBytes keyBytes; // a PKCS #8 structure in DER, unencrypted

    [[nodiscard]] bool ok() const noexcept { return !keyBytes.empty(); }
};

// The private key of `certificate`; not ok, and logged, when the system withholds it.
[[nodiscard]] ExportedKey exportPrivateKey(const platform::Certificate& certificate);

// The algorithm of a key as the TLS layer names it. QSsl::Opaque when the system does not tell,
// which is logged, or tells one that the TLS layer has no name for.
[[nodiscard]] QSsl::KeyAlgorithm keyAlgorithm(const platform::KeyHandle& key);

} // namespace quorin

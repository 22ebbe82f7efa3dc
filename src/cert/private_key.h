#pragma once

#include "platform/certificate_store.h"

#include <QSsl>

namespace quorin {

// An exported private key.
struct ExportedKey {
    QSsl::KeyAlgorithm algorithm = QSsl::Opaque;
    platform::SecretBytes keyBytes;   // PKCS #8 in DER
    platform::SecretBytes passPhrase; // decrypts keyBytes; empty if they are not encrypted
    bool hasHandle = false;           // the certificate has a key to which the system allows access
    platform::SystemError error;      // why there is no handle, or why the export failed

    [[nodiscard]] bool ok() const noexcept { return !keyBytes.empty(); }
};

// Exports the private key of `certificate` unencrypted. If there is none or the system denies
// access or export, logs a warning and returns a key that is not ok().
[[nodiscard]] ExportedKey exportPrivateKey(const platform::Certificate& certificate);

// Exports the private key of `certificate` encrypted: some systems allow only that for some keys.
// Logs only a success; otherwise returns a key that is not ok().
[[nodiscard]] ExportedKey exportEncryptedPrivateKey(const platform::Certificate& certificate);

// Returns the algorithm of `key` and logs its name. Returns QSsl::Opaque if the system does not
// report the algorithm, which is logged as an error, or if Qt does not support it.
[[nodiscard]] QSsl::KeyAlgorithm keyAlgorithm(const platform::KeyHandle& key);

} // namespace quorin

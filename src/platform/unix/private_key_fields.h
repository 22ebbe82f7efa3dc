#pragma once

#include "platform/secret.h"

#include <QString>

#include <openssl/evp.h>
#include <openssl/x509.h>

// Properties of a private key, in the formats of KeyHandle (platform/certificate_store.h).
namespace quorin::platform {

// Returns true if `key` matches the public key of `certificate`.
[[nodiscard]] bool isKeyOf(const X509& certificate, const EVP_PKEY& key);

// Returns the key as unencrypted PKCS #8 in DER, or no bytes if it cannot be encoded.
[[nodiscard]] SecretBytes pkcs8Of(const EVP_PKEY& key);

// Returns the Windows name of the algorithm group, or OpenSSL's name of the key type if Windows has
// no such group.
[[nodiscard]] QString algorithmGroupOf(const EVP_PKEY& key);

} // namespace quorin::platform

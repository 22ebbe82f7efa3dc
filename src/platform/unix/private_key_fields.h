#pragma once

#include "platform/secret.h"

#include <QString>

#include <openssl/evp.h>
#include <openssl/x509.h>

// What a private key says, in the words of platform/certificate_store.h.
namespace platform {

[[nodiscard]] bool isKeyOf(const X509& certificate, const EVP_PKEY& key);
[[nodiscard]] SecretBytes pkcs8Of(const EVP_PKEY& key);
[[nodiscard]] QString algorithmGroupOf(const EVP_PKEY& key);

} // namespace platform

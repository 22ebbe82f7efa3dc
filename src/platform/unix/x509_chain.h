#pragma once

#include "platform/unix/openssl.h"

#include <vector>

// How a certificate is related to others. OpenSSL caches results in the certificates, which are
// therefore not const.
namespace quorin::platform {

// Returns true if the subject of `issuer` is the issuer of `certificate` and has signed it.
[[nodiscard]] bool hasIssued(X509& issuer, X509& certificate);

[[nodiscard]] bool isSelfSigned(X509& certificate);

// Returns true if the signature or the key provides less than 112 bits of security.
[[nodiscard]] bool isWeak(X509& certificate);

// Returns the certificates with the subject `name` in the folder and the file of authorities of the
// system's OpenSSL. The environment variables SSL_CERT_DIR and SSL_CERT_FILE can name others.
[[nodiscard]] std::vector<X509Pointer> systemAuthorities(const X509_NAME& name);

} // namespace quorin::platform

#pragma once

#include "platform/system_error.h"

#include <QString>

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <memory>

namespace quorin::platform {

template<auto Free>
struct OpensslDeleter {
    template<typename Object>
    void operator()(Object* object) const noexcept {
        Free(object);
    }
};

struct OpensslFree {
    void operator()(void* memory) const noexcept { OPENSSL_free(memory); }
};

// Frees a list and its certificates.
struct X509StackFree {
    void operator()(STACK_OF(X509) * certificates) const noexcept {
        sk_X509_pop_free(certificates, X509_free);
    }
};

using GeneralNamesPointer = std::unique_ptr<GENERAL_NAMES, OpensslDeleter<GENERAL_NAMES_free>>;
using OpensslBytes = std::unique_ptr<unsigned char, OpensslFree>;
using BioPointer = std::unique_ptr<BIO, OpensslDeleter<BIO_free_all>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, OpensslDeleter<EVP_PKEY_free>>;
using Pkcs8Pointer = std::unique_ptr<PKCS8_PRIV_KEY_INFO, OpensslDeleter<PKCS8_PRIV_KEY_INFO_free>>;
using X509StackPointer = std::unique_ptr<STACK_OF(X509), X509StackFree>;
using X509Pointer = std::unique_ptr<X509, OpensslDeleter<X509_free>>;
using X509StorePointer = std::unique_ptr<X509_STORE, OpensslDeleter<X509_STORE_free>>;
using X509StoreContextPointer =
    std::unique_ptr<X509_STORE_CTX, OpensslDeleter<X509_STORE_CTX_free>>;

// Discards OpenSSL errors raised in this scope on this thread so that Qt does not report them as
// failures of a TLS connection.
class OpensslErrorScope {
public:
    OpensslErrorScope() { ERR_set_mark(); }
    ~OpensslErrorScope() { ERR_pop_to_mark(); }

    OpensslErrorScope(const OpensslErrorScope&) = delete;
    OpensslErrorScope& operator=(const OpensslErrorScope&) = delete;
};

// Returns an OpenSSL error code with its description.
[[nodiscard]] inline SystemError opensslError(unsigned long code) {
    const char* const reason = ERR_reason_error_string(code);
    return {static_cast<std::uint32_t>(code), QString::fromLatin1(reason)};
}

} // namespace quorin::platform

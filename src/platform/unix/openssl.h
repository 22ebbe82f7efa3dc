#pragma once

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

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

using GeneralNamesPointer = std::unique_ptr<GENERAL_NAMES, OpensslDeleter<GENERAL_NAMES_free>>;
using OpensslBytes = std::unique_ptr<unsigned char, OpensslFree>;
using BioPointer = std::unique_ptr<BIO, OpensslDeleter<BIO_free_all>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, OpensslDeleter<EVP_PKEY_free>>;
using Pkcs8Pointer = std::unique_ptr<PKCS8_PRIV_KEY_INFO, OpensslDeleter<PKCS8_PRIV_KEY_INFO_free>>;
using X509Pointer = std::unique_ptr<X509, OpensslDeleter<X509_free>>;

// Discards OpenSSL errors raised in this scope on this thread so that Qt does not report them as
// failures of a TLS connection.
class OpensslErrorScope {
public:
    OpensslErrorScope() { ERR_set_mark(); }
    ~OpensslErrorScope() { ERR_pop_to_mark(); }

    OpensslErrorScope(const OpensslErrorScope&) = delete;
    OpensslErrorScope& operator=(const OpensslErrorScope&) = delete;
};

} // namespace quorin::platform

#pragma once

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace platform {

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

using AlternativeNames = std::unique_ptr<GENERAL_NAMES, OpensslDeleter<GENERAL_NAMES_free>>;
using OpensslBytes = std::unique_ptr<unsigned char, OpensslFree>;
using BioPointer = std::unique_ptr<BIO, OpensslDeleter<BIO_free_all>>;
using KeyPointer = std::unique_ptr<EVP_PKEY, OpensslDeleter<EVP_PKEY_free>>;
using Pkcs8Pointer = std::unique_ptr<PKCS8_PRIV_KEY_INFO, OpensslDeleter<PKCS8_PRIV_KEY_INFO_free>>;
using X509Pointer = std::unique_ptr<X509, OpensslDeleter<X509_free>>;

// Takes back what happens meanwhile from the thread's queue of OpenSSL errors, where the TLS layer
// would take it for a failure of its own.
class OpensslErrorsKept {
public:
    OpensslErrorsKept() { ERR_set_mark(); }
    ~OpensslErrorsKept() { ERR_pop_to_mark(); }

    OpensslErrorsKept(const OpensslErrorsKept&) = delete;
    OpensslErrorsKept& operator=(const OpensslErrorsKept&) = delete;
};

} // namespace platform

#include "platform/uncached_tls_contexts.h"

#include "platform/windows/system.h"

#include <openssl/ssl.h>

namespace quorin::platform {

namespace {

thread_local bool isCacheUnwanted = false;

// Returns a function of OpenSSL, which Qt's TLS plugin has loaded. The gateway library does not
// link to OpenSSL: it could then not be loaded without it, even if HTTPS is disabled.
template<typename Function>
Function* opensslFunction(const wchar_t* library, const char* name) {
    const HMODULE module = GetModuleHandleW(library);
    return module == nullptr
               ? nullptr
               : reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

void onContextCreated(void* context, void* /*value*/, CRYPTO_EX_DATA* /*data*/, int /*index*/,
                      long /*number*/, void* /*argument*/) {
    static auto* const control =
        opensslFunction<decltype(SSL_CTX_ctrl)>(QUORIN_LIBSSL, "SSL_CTX_ctrl");
    if (isCacheUnwanted && control != nullptr) {
        control(static_cast<SSL_CTX*>(context), SSL_CTRL_SET_SESS_CACHE_MODE, SSL_SESS_CACHE_OFF,
                nullptr);
    }
}

int registerCallback() {
    auto* const getNewIndex = opensslFunction<decltype(CRYPTO_get_ex_new_index)>(
        QUORIN_LIBCRYPTO, "CRYPTO_get_ex_new_index");
    return getNewIndex == nullptr ? -1
                                  : getNewIndex(CRYPTO_EX_INDEX_SSL_CTX, 0, nullptr,
                                                &onContextCreated, nullptr, nullptr);
}

} // namespace

UncachedTlsContexts::UncachedTlsContexts() : index_(registerCallback()) {}

UncachedTlsContexts::~UncachedTlsContexts() {
    auto* const freeIndex =
        opensslFunction<decltype(CRYPTO_free_ex_index)>(QUORIN_LIBCRYPTO, "CRYPTO_free_ex_index");
    if (freeIndex != nullptr && index_ >= 0) {
        freeIndex(CRYPTO_EX_INDEX_SSL_CTX, index_);
    }
}

UncachedTlsContexts::Scope::Scope() {
    isCacheUnwanted = true;
}

UncachedTlsContexts::Scope::~Scope() {
    isCacheUnwanted = false;
}

} // namespace quorin::platform

#include "platform/uncached_tls_contexts.h"

#include <openssl/ssl.h>

namespace quorin::platform {

namespace {

thread_local bool isCacheUnwanted = false;

void onContextCreated(void* context, void* /*value*/, CRYPTO_EX_DATA* /*data*/, int /*index*/,
                      long /*number*/, void* /*argument*/) {
    if (isCacheUnwanted) {
        SSL_CTX_set_session_cache_mode(static_cast<SSL_CTX*>(context), SSL_SESS_CACHE_OFF);
    }
}

} // namespace

UncachedTlsContexts::UncachedTlsContexts()
    : index_(SSL_CTX_get_ex_new_index(0, nullptr, &onContextCreated, nullptr, nullptr)) {}

UncachedTlsContexts::~UncachedTlsContexts() {
    CRYPTO_free_ex_index(CRYPTO_EX_INDEX_SSL_CTX, index_);
}

UncachedTlsContexts::Scope::Scope() {
    isCacheUnwanted = true;
}

UncachedTlsContexts::Scope::~Scope() {
    isCacheUnwanted = false;
}

} // namespace quorin::platform

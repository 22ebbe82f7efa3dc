#include "platform/uncached_tls_contexts.h"

#include <openssl/ssl.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <thread>

namespace quorin::platform::test {
namespace {

// The cache mode of a TLS context that is created now.
long cacheModeOfNewContext() {
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(
        SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    return SSL_CTX_get_session_cache_mode(context.get());
}

TEST(UncachedTlsContextsTest, TurnsCacheOffInScope) {
    const UncachedTlsContexts contexts;
    EXPECT_EQ(cacheModeOfNewContext(), SSL_SESS_CACHE_SERVER);
    {
        const UncachedTlsContexts::Scope scope;
        EXPECT_EQ(cacheModeOfNewContext(), SSL_SESS_CACHE_OFF);
    }
    EXPECT_EQ(cacheModeOfNewContext(), SSL_SESS_CACHE_SERVER);
}

TEST(UncachedTlsContextsTest, LeavesOtherThreadsAlone) {
    const UncachedTlsContexts contexts;
    const UncachedTlsContexts::Scope scope;
    long mode = 0;
    std::thread([&mode] { mode = cacheModeOfNewContext(); }).join();
    EXPECT_EQ(mode, SSL_SESS_CACHE_SERVER);
}

TEST(UncachedTlsContextsTest, EndsWithItsObject) {
    std::optional<UncachedTlsContexts> contexts(std::in_place);
    const UncachedTlsContexts::Scope scope;
    contexts.reset();
    EXPECT_EQ(cacheModeOfNewContext(), SSL_SESS_CACHE_SERVER);
}

} // namespace
} // namespace quorin::platform::test

#pragma once

#include "platform/uncached_tls_contexts.h"

#include <QDeadlineTimer>
#include <QSslConfiguration>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>

class QSslContext;
class QSslSocket;

namespace quorin {

// What all TLS connections of one server have in common, so that none of them builds it anew: the
// configuration, and the TLS library's own form of it (its context) with certificate and key.
class SharedTls {
public:
    // With the context go the keys that resumed sessions are encrypted with. It is used for this
    // long, so that who ever gets at those keys can read no older sessions.
    static constexpr std::chrono::milliseconds kLifetime = std::chrono::hours(1);

    explicit SharedTls(std::chrono::milliseconds lifetime = kLifetime) : lifetime_(lifetime) {}

    // Before the first connection.
    void configure(const QSslConfiguration& configuration);

    // Begins TLS on a connection that a client opened. Any number of threads at a time, each for
    // its own socket.
    void startServerEncryption(QSslSocket& socket) const;

private:
    [[nodiscard]] std::shared_ptr<QSslContext> context() const;
    void createContext(QSslSocket& socket) const;
    void adopt(std::shared_ptr<QSslContext> context) const;

    std::chrono::milliseconds lifetime_;
    QSslConfiguration configuration_;
    std::optional<platform::UncachedTlsContexts> uncachedContexts_; // set by configure()

    mutable std::mutex mutex_;
    // Null when a connection has to make its own: at the beginning, when the time is over, where
    // none can be made (no certificate), and with TLS libraries that know nothing of the kind.
    mutable std::shared_ptr<QSslContext> context_;
    mutable QDeadlineTimer end_;
};

} // namespace quorin

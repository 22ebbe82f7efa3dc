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

// The TLS configuration of one server, shared by all its connections: the Qt configuration and the
// OpenSSL context that Qt creates from it. Without this class, Qt would create a context for each
// connection, which takes nearly as long as the rest of the handshake (docs/performance.md).
class SharedTls {
public:
    // A context is replaced after this time, and with it the keys that encrypt session tickets.
    // Without a lifetime, a stolen key would decrypt all sessions since the start.
    static constexpr std::chrono::milliseconds kLifetime = std::chrono::hours(1);

    explicit SharedTls(std::chrono::milliseconds lifetime = kLifetime) : lifetime_(lifetime) {}

    // Sets the configuration. Call before the first connection, after Qt has loaded its TLS
    // backend.
    void configure(const QSslConfiguration& configuration);

    // Starts the server side of the handshake on `socket`. May be called from several threads, each
    // with its own socket.
    void startServerEncryption(QSslSocket& socket) const;

private:
    [[nodiscard]] std::shared_ptr<QSslContext> context() const;
    void createContext(QSslSocket& socket) const;
    void adopt(std::shared_ptr<QSslContext> context) const;

    std::chrono::milliseconds lifetime_;
    QSslConfiguration configuration_;
    std::optional<platform::UncachedTlsContexts> uncachedContexts_; // set by configure()

    mutable std::mutex mutex_;
    // Null if the next connection must create one: before the first connection, if none can be
    // created (no certificate), and with TLS backends other than OpenSSL. Used until end_.
    mutable std::shared_ptr<QSslContext> context_;
    mutable QDeadlineTimer end_;
};

} // namespace quorin

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
// OpenSSL context that Qt creates from it. Creating a context for each connection would take longer
// than the rest of the handshake.
class SharedTls {
public:
    // A context is replaced after this time, and with it the keys that encrypt session tickets:
    // a stolen key decrypts the sessions of one lifetime only.
    static constexpr std::chrono::milliseconds kLifetime = std::chrono::hours(1);

    explicit SharedTls(std::chrono::milliseconds lifetime = kLifetime) : lifetime_(lifetime) {}

    // Sets the configuration. Call it before the first connection.
    void configure(const QSslConfiguration& configuration);

    // Starts the server side of the handshake on `socket`. Thread-safe for different sockets.
    void startServerEncryption(QSslSocket& socket) const;

private:
    [[nodiscard]] std::shared_ptr<QSslContext> context() const;
    void createContext(QSslSocket& socket) const;
    void adopt(std::shared_ptr<QSslContext> context) const;

    std::chrono::milliseconds lifetime_;
    QSslConfiguration configuration_;
    std::optional<platform::UncachedTlsContexts> uncachedContexts_; // set by configure()

    mutable std::mutex mutex_;
    // Null if the next connection must create one: before the first one, if none can be created (no
    // certificate), and for TLS backends other than OpenSSL. Used until end_.
    mutable std::shared_ptr<QSslContext> context_;
    mutable QDeadlineTimer end_;
};

} // namespace quorin

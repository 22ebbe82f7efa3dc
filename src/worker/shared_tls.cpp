#undef QT_NO_KEYWORDS // Qt's private header uses the keywords

#include "worker/shared_tls.h"

#include <QSslSocket>

// Qt has no public function that shares a context among sockets.
#include <private/qsslsocket_p.h>

#include <utility>

namespace quorin {

void SharedTls::configure(const QSslConfiguration& configuration) {
    configuration_ = configuration;
    uncachedContexts_.emplace();
}

void SharedTls::startServerEncryption(QSslSocket& socket) const {
    socket.setSslConfiguration(configuration_);
    if (const std::shared_ptr<QSslContext> shared = context()) {
        QSslSocketPrivate::checkSettingSslContext(&socket, shared);
        socket.startServerEncryption();
    } else {
        createContext(socket);
    }
}

void SharedTls::createContext(QSslSocket& socket) const {
    {
        const platform::UncachedTlsContexts::Scope scope;
        socket.startServerEncryption();
    }
    adopt(QSslSocketPrivate::sslContext(&socket));
}

std::shared_ptr<QSslContext> SharedTls::context() const {
    const std::lock_guard lock(mutex_);
    return end_.hasExpired() ? nullptr : context_;
}

void SharedTls::adopt(std::shared_ptr<QSslContext> context) const {
    const std::lock_guard lock(mutex_);
    context_ = std::move(context);
    end_ = QDeadlineTimer(lifetime_);
}

} // namespace quorin

#pragma once

#include "handlers/request_context.h"
#include "platform/socket_descriptor.h"
#include "worker/server_context.h"

#include <QEventLoop>
#include <QObject>
#include <QRunnable>
#include <QTimer>

#include <atomic>
#include <concepts>
#include <exception>
#include <memory>
#include <optional>

namespace quorin {

// Serves one accepted connection: waits for the request in its own event loop, answers it and ends.
// Created by the server on the main thread; run and deleted by the thread pool on a pool thread. A
// worker that never runs closes its connection when it is deleted.
class Worker : public QObject, public QRunnable {
    Q_OBJECT

public:
    // Takes ownership of the descriptor.
    Worker(platform::SocketDescriptor descriptor,
           std::shared_ptr<const ServerContext> serverContext);
    ~Worker() override;

    // Serves the connection until it ends. Does not throw; a failure ends only this connection.
    // Returns at once, without a log line, if quitting was requested before.
    void run() override;

    // Transfers ownership of the descriptor to the caller. Only for a worker that never runs.
    [[nodiscard]] qintptr releaseDescriptor() noexcept { return descriptor_.release(); }

public Q_SLOTS:
    // Serves the request, which is the bytes that have arrived so far (docs/compatibility.md).
    void SslSocketReadyRead();
    // Ends the connection: the client has disconnected.
    void SslSocketDisconnected();
    // Ends a connection that has sent no request in time.
    void ConnectionTimeout();

private:
    // Runs the body of a slot. Stores an exception and ends the event loop. Without this, an
    // exception would pass through Qt's event loop, which Qt does not support, and end the process.
    template<std::invocable Action>
    void captureException(Action&& action) noexcept;

    void serveConnection();
    void createEventLoop();
    void openSocket();
    void startConnectionTimer();
    void answerRequest();
    void serveRequest();
    void replyAfterFailure();
    void endLoop();

    platform::SocketDescriptor descriptor_;
    std::shared_ptr<const ServerContext> serverContext_;
    RequestContext context_;

    // Created in run(), so that they belong to the pool thread.
    std::optional<QEventLoop> eventLoop_;
    std::unique_ptr<QTimer> connectionTimer_;

    // False once the request is taken, the connection has timed out or the event loop has ended:
    // Qt may emit readyRead() after each of these.
    bool acceptsRequest_ = true;
    // Set by captureException(); rethrown after the event loop.
    std::exception_ptr pendingException_;
};

} // namespace quorin

#pragma once

#include "platform/socket_descriptor.h"
#include "worker/shared_tls.h"
#include "worker/worker_context.h"

#include <QEventLoop>
#include <QObject>
#include <QRunnable>
#include <QTimer>

#include <atomic>
#include <concepts>
#include <exception>
#include <memory>
#include <optional>

// What the workers of one server share, and own together with it. Workers only read it.
struct WorkerSurroundings {
    QString documentRoot;
    quorin::CommunicationScheme communicationScheme = quorin::CommunicationScheme::None;
    quorin::SharedTls tls; // used when HTTPS is enabled
    std::atomic<bool> quitRequested = false;
};

// Serves one accepted connection: waits for the request in an event loop of its own, has it
// answered, and ends. Made by the server on the main thread; run, and deleted, by the thread pool
// on one of its threads. One that never runs closes its connection when it is deleted.
class Worker : public QObject, public QRunnable {
    Q_OBJECT

public:
    // Takes the descriptor over.
    Worker(platform::SocketDescriptor descriptor,
           std::shared_ptr<const WorkerSurroundings> surroundings);
    ~Worker() override;

    // The whole life of the connection. Whatever fails ends the connection and nothing else.
    // Returns at once, without a log line, if quitting was requested before.
    void run() override;

    // Hands the connection of a worker that never runs to the caller.
    [[nodiscard]] qintptr releaseDescriptor() noexcept { return descriptor_.release(); }

public Q_SLOTS:
    // One call serves the one request: what has arrived by now is the request.
    void SslSocketReadyRead();
    void SslSocketDisconnected();
    // No request came in time.
    void ConnectionTimeout();

private:
    // Does what a slot is for: a failure must not get out into the event loop. It ends the loop
    // instead, and the connection with it.
    template<std::invocable Action>
    void keepFailure(Action&& action) noexcept;

    void serveConnection();
    void makeEventLoop();
    void openSocket();
    void startConnectionTimer();
    void answerRequest();
    void serveRequest();
    void replyToFailure();
    void endLoop();

    platform::SocketDescriptor descriptor_;
    std::shared_ptr<const WorkerSurroundings> surroundings_;
    quorin::WorkerContext context_;

    // Made in run(), so that they belong to the pool's thread.
    std::optional<QEventLoop> eventLoop_;
    std::unique_ptr<QTimer> connectionTimer_;

    // False once the request is taken, the connection has timed out or the event loop has ended:
    // Qt may emit readyRead() after each of these.
    bool acceptsRequest_ = true;
    // What keepFailure() kept; thrown again behind the event loop.
    std::exception_ptr escaped_;
};

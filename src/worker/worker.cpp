#include "worker/worker.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "handlers/large_file_limit.h"
#include "handlers/refusal.h"
#include "handlers/reply.h"
#include "handlers/routing.h"
#include "http/request.h"
#include "http/request_parser.h"
#include "log/log.h"
#include "platform/descriptors.h"
#include "worker/timer_interval.h"
#include "worker/unread_bytes.h"

#include <QAbstractEventDispatcher>
#include <QHostAddress>

#include <chrono>
#include <new>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

// The size of the read buffer, in bytes. A request that fills it is refused like a malformed one.
constexpr qint64 kRequestLimit = qint64{1024} * 1024;

// Function signatures for the trace lines of the log.
constexpr QStringView kRun = u"void __cdecl Worker::run(void)";
constexpr QStringView kReadyRead = u"void __cdecl Worker::SslSocketReadyRead(void)";
constexpr QStringView kDisconnected = u"void __cdecl Worker::SslSocketDisconnected(void)";

void traceStart(QStringView function) {
    log::debug([function]() -> QString { return u"[Start] " + function; });
}

void traceEnd(QStringView function) {
    log::debug([function] { return endMessage(function.toString()); });
}

QString messageOf(const std::exception& exception) {
    return endMessage(QString::fromUtf8(exception.what()));
}

} // namespace

Worker::Worker(platform::SocketDescriptor descriptor,
               std::shared_ptr<const ServerContext> serverContext)
    : descriptor_(std::move(descriptor)), serverContext_(std::move(serverContext)) {
    context_.documentRoot = serverContext_->documentRoot;
    context_.communicationScheme = serverContext_->communicationScheme;
}

Worker::~Worker() {
    acceptsRequest_ = false;
    captureException([this] {
        if (context_.socket && context_.socket->isOpen()) {
            discardUnread(*context_.socket, kRequestLimit);
            context_.socket->disconnectFromHost(); // sends close_notify over TLS; close() does not
            context_.socket->flush();
            context_.socket->close();
        }
    });
    context_.socket.reset(); // may emit disconnected(), whose slot uses the event loop
}

void Worker::run() {
    // The queue watcher may start a worker just after the quit. The server does not wait for it.
    if (serverContext_->quitRequested) {
        return;
    }
    try {
        serveConnection();
    } catch (const std::bad_alloc&) {
        // Memory does not even suffice for the log line. The connection closes.
    }
}

void Worker::serveConnection() {
    traceStart(kRun);
    try {
        createEventLoop();
        openSocket();
        startConnectionTimer();
        eventLoop_->exec(QEventLoop::WaitForMoreEvents);
        if (pendingException_) {
            std::rethrow_exception(pendingException_);
        }
        traceEnd(kRun);
    } catch (const GatewayException& exception) {
        log::error(exception.message());
    } catch (const std::exception& exception) {
        log::error(messageOf(exception));
    }
}

// Qt aborts the process if it cannot open a descriptor for the first event loop of a thread.
void Worker::createEventLoop() {
    if (QAbstractEventDispatcher::instance() == nullptr && !platform::hasFreeDescriptor()) {
        throw GatewayException(GatewayException::Request,
                               endMessage(u"no free descriptor for a worker"_s), false);
    }
    eventLoop_.emplace();
}

template<std::invocable Action>
void Worker::captureException(Action&& action) noexcept {
    try {
        std::forward<Action>(action)();
    } catch (...) {
        pendingException_ = std::current_exception();
        endLoop();
    }
}

void Worker::openSocket() {
    context_.socket = std::make_unique<QSslSocket>();
    QSslSocket& socket = *context_.socket;
    socket.setReadBufferSize(kRequestLimit);
    if (socket.setSocketDescriptor(descriptor_.get(), QAbstractSocket::ConnectedState,
                                   QIODevice::ReadWrite)) {
        static_cast<void>(descriptor_.release()); // the socket closes it
    }
    connect(&socket, &QSslSocket::readyRead, this, &Worker::SslSocketReadyRead,
            Qt::DirectConnection);
    connect(&socket, &QSslSocket::disconnected, this, &Worker::SslSocketDisconnected,
            Qt::DirectConnection);
    if (GatewaySettings::instance().HttpsEnabled) {
        serverContext_->tls.startServerEncryption(socket);
        if (socket.mode() == QSslSocket::UnencryptedMode) {
            failRequest(u"TLS could not be started"_s);
        }
    }
}

void Worker::startConnectionTimer() {
    connectionTimer_ = std::make_unique<QTimer>();
    connectionTimer_->setInterval(
        timerInterval(std::chrono::seconds(GatewaySettings::instance().ConnectionTimeout)));
    connect(connectionTimer_.get(), &QTimer::timeout, this, &Worker::ConnectionTimeout,
            Qt::DirectConnection);
    connectionTimer_->start();
}

void Worker::SslSocketReadyRead() {
    if (!acceptsRequest_) {
        return;
    }
    captureException([this] {
        traceStart(kReadyRead);
        if (!serverContext_->quitRequested) {
            acceptsRequest_ = false;
            answerRequest();
            endLoop();
        }
        traceEnd(kReadyRead);
    });
}

void Worker::answerRequest() {
    try {
        serveRequest();
    } catch (const GatewayException& exception) {
        if (!exception.isSilent()) {
            log::error(exception.message());
        }
        replyAfterFailure();
    } catch (const std::exception& exception) {
        log::error(messageOf(exception));
        replyAfterFailure();
    }
}

void Worker::serveRequest() {
    QSslSocket& socket = *context_.socket;
    const QByteArray input = socket.readAll();
    http::Request request;
    if (input.size() >= kRequestLimit ||
        !http::parser::parse(request,
                             {input.constData(), static_cast<std::size_t>(input.size())})) {
        refuse(context_, http::Status::InternalServerError,
               u"Failed to parse http request. (" + socket.peerAddress().toString() + u')');
    }
    enforceLargeFileLimit(context_, request.line.target);
    connectionTimer_->stop();
    route(context_, request);
}

// Also sent after the status reply of a refusal (docs/compatibility.md).
void Worker::replyAfterFailure() {
    if (!context_.responseStarted) {
        replyStatus(*context_.socket, http::Status::InternalServerError);
    }
}

void Worker::SslSocketDisconnected() {
    captureException([this] {
        traceStart(kDisconnected);
        context_.disconnected = true;
        traceEnd(kDisconnected);
        endLoop();
    });
}

void Worker::ConnectionTimeout() {
    captureException([this] {
        acceptsRequest_ = false;
        connectionTimer_->stop();
        log::error(endMessage(u"connect timeout"_s));
        endLoop();
    });
}

void Worker::endLoop() {
    if (eventLoop_ && eventLoop_->isRunning()) {
        eventLoop_->exit(0);
    }
}

} // namespace quorin

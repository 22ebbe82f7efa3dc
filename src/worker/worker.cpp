#include "worker/worker.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "http/request.h"
#include "http/request_parser.h"
#include "log/application_logger.h"
#include "platform/descriptors.h"
#include "worker/large_file.h"
#include "worker/reply.h"
#include "worker/request_failure.h"
#include "worker/routing.h"

#include <QAbstractEventDispatcher>
#include <QHostAddress>
#include <QThreadPool>

#include <algorithm>
#include <chrono>
#include <limits>
#include <new>
#include <utility>

using namespace quorin;
using namespace Qt::StringLiterals;

namespace {

using Logger = quorin::QuorinGatewayApplicationLogger;

// Bytes of one request, and of what the client may send ahead while it is served. A request that
// fills this is refused like a malformed one.
constexpr qint64 kRequestLimit = qint64{1024} * 1024;

// The functions as the trace lines of the log name them.
constexpr QStringView kRun = u"void __cdecl Worker::run(void)";
constexpr QStringView kReadyRead = u"void __cdecl Worker::SslSocketReadyRead(void)";
constexpr QStringView kDisconnected = u"void __cdecl Worker::SslSocketDisconnected(void)";

void traceStart(QStringView function) {
    Logger::logDebug([function]() -> QString { return u"[Start] " + function; });
}

void traceEnd(QStringView function) {
    Logger::logDebug([function] { return endMessage(function.toString()); });
}

QString messageOf(const std::exception& exception) {
    return endMessage(QString::fromUtf8(exception.what()));
}

std::chrono::milliseconds connectionTimeout() {
    constexpr std::chrono::milliseconds longest{std::numeric_limits<int>::max()};
    const std::chrono::milliseconds configured =
        std::chrono::seconds(GatewaySettings::instance().ConnectionTimeout);
    return std::min(configured, longest); // a timer counts in an int
}

// Discards what the client has sent beyond its request. Closing a connection with unread bytes
// resets it, and the client may lose the end of its reply. Not over TLS: there waitForReadyRead(0)
// does not return while records arrive that carry no data, such as key updates.
void discardUnread(QSslSocket& socket) {
    if (socket.mode() != QSslSocket::UnencryptedMode) {
        return;
    }
    qint64 discarded = 0;
    while (socket.state() == QAbstractSocket::ConnectedState && discarded < kRequestLimit) {
        discarded += socket.skip(socket.bytesAvailable());
        if (!socket.waitForReadyRead(0)) {
            break;
        }
    }
}

bool isRefusedAsLarge(std::string_view target) {
    const GatewaySettings& settings = GatewaySettings::instance();
    return settings.IsMadeClientRequestWaited &&
           QThreadPool::globalInstance()->activeThreadCount() > settings.MaxLargeFileRequest &&
           isLargeFile(target);
}

} // namespace

Worker::Worker(platform::SocketDescriptor descriptor,
               std::shared_ptr<const WorkerSurroundings> surroundings)
    : descriptor_(std::move(descriptor)), surroundings_(std::move(surroundings)) {
    context_.documentRoot = surroundings_->documentRoot;
    context_.communicationScheme = surroundings_->communicationScheme;
}

Worker::~Worker() {
    acceptsRequest_ = false;
    keepFailure([this] {
        if (context_.socket && context_.socket->isOpen()) {
            discardUnread(*context_.socket);
            context_.socket->disconnectFromHost(); // sends close_notify over TLS; close() does not
            context_.socket->flush();
            context_.socket->close();
        }
    });
    context_.socket.reset(); // it may tell of its end only now, which asks for the event loop
}

void Worker::run() {
    // The queue watcher may start a worker just after the quit; the server does not wait for it.
    if (surroundings_->quitRequested) {
        return;
    }
    try {
        serveConnection();
    } catch (const std::bad_alloc&) {
        // There was no memory even for the line that tells of it. The connection closes.
    }
}

void Worker::serveConnection() {
    traceStart(kRun);
    try {
        makeEventLoop();
        openSocket();
        startConnectionTimer();
        eventLoop_->exec(QEventLoop::WaitForMoreEvents);
        if (escaped_) {
            std::rethrow_exception(escaped_);
        }
        traceEnd(kRun);
    } catch (const GatewayException& exception) {
        Logger::logError(exception.message());
    } catch (const std::exception& exception) {
        Logger::logError(messageOf(exception));
    }
}

// Qt ends the process when it has no descriptor for a thread's first event loop.
void Worker::makeEventLoop() {
    if (QAbstractEventDispatcher::instance() == nullptr && !platform::hasFreeDescriptor()) {
        throw GatewayException(GatewayException::Request,
                               endMessage(u"no free descriptor for a worker"_s), false);
    }
    eventLoop_.emplace();
}

template<std::invocable Action>
void Worker::keepFailure(Action&& action) noexcept {
    try {
        std::forward<Action>(action)();
    } catch (...) {
        escaped_ = std::current_exception();
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
        surroundings_->tls.startServerEncryption(socket);
        if (socket.mode() == QSslSocket::UnencryptedMode) {
            failRequest(u"TLS could not be started"_s);
        }
    }
}

void Worker::startConnectionTimer() {
    connectionTimer_ = std::make_unique<QTimer>();
    connectionTimer_->setInterval(connectionTimeout());
    connect(connectionTimer_.get(), &QTimer::timeout, this, &Worker::ConnectionTimeout,
            Qt::DirectConnection);
    connectionTimer_->start();
}

void Worker::SslSocketReadyRead() {
    if (!acceptsRequest_) {
        return;
    }
    keepFailure([this] {
        traceStart(kReadyRead);
        if (!surroundings_->quitRequested) {
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
            Logger::logError(exception.message());
        }
        replyToFailure();
    } catch (const std::exception& exception) {
        Logger::logError(messageOf(exception));
        replyToFailure();
    }
}

void Worker::serveRequest() {
    QSslSocket& socket = *context_.socket;
    const QByteArray input = socket.readAll();
    http::Request request;
    if (input.size() >= kRequestLimit ||
        !http::parser::parse(request,
                             {input.constData(), static_cast<std::size_t>(input.size())})) {
        replyStatus(socket, "500", {});
        failRequest(u"Failed to parse http request. (" + socket.peerAddress().toString() + u')');
    }
    if (isRefusedAsLarge(request.line.target)) {
        replyStatus(socket, "503", {});
        Logger::logDebug([&]() -> QString {
            return u"Large file limitation. Requested [" +
                   QString::fromStdString(request.line.target) + u"] from [" +
                   socket.peerAddress().toString() + u']';
        });
        failRequest(u"Large file limitation."_s, FailureLog::Suppress);
    }
    connectionTimer_->stop();
    route(context_, request);
}

// Every failure ends in this reply, also when a status told of it before; only a reply that has
// begun with success stays alone.
void Worker::replyToFailure() {
    if (!context_.responseStarted) {
        writeSocket(*context_.socket, makeResponse("500", {}));
    }
}

void Worker::SslSocketDisconnected() {
    keepFailure([this] {
        traceStart(kDisconnected);
        context_.disconnected = true;
        traceEnd(kDisconnected);
        endLoop();
    });
}

void Worker::ConnectionTimeout() {
    keepFailure([this] {
        acceptsRequest_ = false;
        connectionTimer_->stop();
        Logger::logError(endMessage(u"connect timeout"_s));
        endLoop();
    });
}

void Worker::endLoop() {
    if (eventLoop_ && eventLoop_->isRunning()) {
        eventLoop_->exit(0);
    }
}

#include "server/tcp_server.h"

#include "cert/certificate_name.h"
#include "cert/server_certificate.h"
#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "log/log.h"
#include "platform/application_report.h"
#include "platform/control_pipe.h"
#include "platform/listen_backlog.h"
#include "server/polling.h"
#include "server/queue_watcher.h"
#include "server/thread_pool_watcher.h"
#include "worker/connection_refusal.h"
#include "worker/tls_backend.h"
#include "worker/tls_configuration.h"
#include "worker/worker.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QNetworkProxy>
#include <QThreadPool>
#include <QVariant>

#include <chrono>
#include <cstddef>
#include <new>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

// Connections go to the request queue and are never pending. Any number above 0 enables accepting.
constexpr int kPendingConnections = 1;

} // namespace

TcpServer::TcpServer(QCoreApplication* application, const QString& documentRoot)
    : application_(application) {
    const GatewaySettings& settings = GatewaySettings::instance();
    serverContext_->documentRoot = documentRoot;
    serverContext_->communicationScheme =
        communicationSchemeOf(settings.RootUrl, settings.IsEnabledHttpInFacility);
    logReplyScheme();
    logListeningMode();
    if (settings.HttpsEnabled) {
        loadCertificate();
    }

    localServer_ = std::make_unique<platform::ControlPipe>(platform::kControlPipeName.toString());
    connect(localServer_.get(), &QLocalServer::newConnection, this,
            &TcpServer::LocalServerNewConnection);
    queueWatcher_ = std::make_unique<QueueWatcher>(&serverContext_->quitRequested,
                                                   QThreadPool::globalInstance(), &requestQueue_);
    queueWatcher_->start(QThread::InheritPriority);
    openControlPipe();

    // Otherwise Qt searches for a proxy, and listens through a SOCKS proxy that the system names.
    setProxy(QNetworkProxy::NoProxy);
    setListenBacklogSize(platform::longestListenBacklog());
    connect(this, &QTcpServer::acceptError, this, &TcpServer::recoverFromAcceptError);
    admissionTimer_.setInterval(std::chrono::duration_cast<std::chrono::milliseconds>(kIdlePoll));
    connect(&admissionTimer_, &QTimer::timeout, this, &TcpServer::resumeAdmission);
}

TcpServer::~TcpServer() {
    cleanUp();
}

void TcpServer::logReplyScheme() const {
    log::info(u"Replying communication scheme for WebAPI - " +
              schemeText(serverContext_->communicationScheme));
}

void TcpServer::logListeningMode() const {
    const QStringView mode =
        GatewaySettings::instance().HttpsEnabled ? u"SSL(https)" : u"Non-SSL(http)";
    log::info(u"Listens - " + mode + u" requests.");
}

void TcpServer::loadCertificate() {
    if (const std::optional<QString> missing = missingTlsBackend()) {
        throw GatewayException(GatewayException::Fatal, endMessage(*missing), false);
    }
    const GatewaySettings& settings = GatewaySettings::instance();
    const QByteArray name =
        chooseCertificateName(settings.OrganizationId, settings.RootUrl, settings.GatewayAddress);
    const ServerCertificate found = findServerCertificate(name);
    application_->setProperty(platform::kCertificateNameProperty, QString::fromUtf8(name));
    if (!found.certificate.isNull() && !found.privateKey.isNull()) {
        application_->setProperty(platform::kCertificateEndProperty,
                                  found.certificate.expiryDate());
    }
    serverContext_->tls.configure(
        tlsConfiguration(found.certificate, found.privateKey, found.intermediates));
}

void TcpServer::openControlPipe() {
    std::optional<QString> failure;
    if (!retry([&] { return !(failure = localServer_->open()); })) {
        throw GatewayException(
            GatewayException::Fatal,
            endMessage(QString(u"failed to local socket server listening:" + *failure)), false);
    }
    threadPoolWatcher_ = std::make_unique<ThreadPoolWatcher>(&serverContext_->quitRequested,
                                                             QThreadPool::globalInstance());
    connect(threadPoolWatcher_.get(), &ThreadPoolWatcher::Satisfied, this,
            &TcpServer::QuitWatcherSatisfied);
    threadPoolWatcher_->start(QThread::InheritPriority);
}

// QTcpServer has paused accepting and does not resume it by itself.
void TcpServer::recoverFromAcceptError() {
    log::error(endMessage(QString(u"a connection could not be accepted: " + errorString())));
    admissionTimer_.start();
}

// pauseAccepting() alone would not end the loop in which QTcpServer may be accepting now.
void TcpServer::pauseAdmission() {
    setMaxPendingConnections(0);
    pauseAccepting();
    if (!admissionTimer_.isActive()) {
        log::error(endMessage(u"connections wait for free descriptors"_s));
        admissionTimer_.start();
    }
}

void TcpServer::resumeAdmission() {
    if (!isListening()) {
        admissionTimer_.stop(); // a quit has been requested since the pause
        return;
    }
    if (hasDescriptorsForAnother()) {
        admissionTimer_.stop();
        setMaxPendingConnections(kPendingConnections);
        resumeAccepting();
    }
}

void TcpServer::incomingConnection(qintptr socketDescriptor) {
    try {
        admit(platform::SocketDescriptor(socketDescriptor));
    } catch (const std::bad_alloc&) {
        // The connection is closed already. Later ones are served when memory is available.
    }
}

void TcpServer::admit(platform::SocketDescriptor descriptor) {
    auto worker = std::make_unique<Worker>(std::move(descriptor), serverContext_);
    const GatewaySettings& settings = GatewaySettings::instance();
    const std::size_t load =
        static_cast<std::size_t>(QThreadPool::globalInstance()->activeThreadCount()) +
        requestQueue_.size();
    if (!settings.IsMadeClientRequestWaited &&
        load >= static_cast<std::size_t>(settings.MaxUserSession)) {
        refuseConnection(worker->releaseDescriptor());
        log::error(endMessage(QString(u"too many tcp connection arrived MaxUserSession:" +
                                      QString::number(settings.MaxUserSession))));
        return;
    }
    if (!settings.IsMadeClientRequestWaited && !hasDescriptorsForAnother()) {
        refuseConnection(worker->releaseDescriptor());
        log::error(endMessage(u"connection refused: too few free descriptors"_s));
        return;
    }
    requestQueue_.append(std::move(worker));
    if (settings.IsMadeClientRequestWaited && !hasDescriptorsForAnother()) {
        pauseAdmission();
    }
}

bool TcpServer::hasDescriptorsForAnother() {
    return descriptorBudget_.admitsAnother(QThreadPool::globalInstance()->activeThreadCount(),
                                           requestQueue_.size());
}

void TcpServer::LocalServerNewConnection() {
    const std::unique_ptr<QLocalSocket> controller(localServer_->nextPendingConnection());
    if (!controller) {
        return;
    }
    controller->waitForReadyRead(
        static_cast<int>(std::chrono::milliseconds(platform::kCommandTimeout).count()));
    const QByteArray received = controller->readAll();
    const QString command = QString::fromUtf8(received.constData()); // up to the first NUL
    if (command == QLatin1StringView(platform::kQuitCommand)) {
        log::info(u"quit command recieved"_s);
        close();
        serverContext_->quitRequested = true;
    }
}

void TcpServer::QuitWatcherSatisfied() {
    cleanUp();
    application_->exit(0);
}

void TcpServer::cleanUp() {
    if (threadPoolWatcher_ && queueWatcher_) {
        // A watcher must not be deleted while its thread runs.
        stopOrTerminate(*threadPoolWatcher_, *queueWatcher_);
    }
    threadPoolWatcher_.reset();
    queueWatcher_.reset();
    requestQueue_.clear();
    localServer_.reset();
}

} // namespace quorin

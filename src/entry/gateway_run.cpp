#include "entry/gateway_run.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/settings_file.h"
#include "log/application_logger.h"
#include "log/log.h"
#include "platform/application_report.h"
#include "platform/folders.h"
#include "platform/instance_guard.h"
#include "server/document_root.h"
#include "server/polling.h"
#include "server/tcp_server.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <QVariant>

#include <cstring>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr int kArguments = 3;
constexpr QStringView kSuccess = u"Success";
constexpr QStringView kFailure = u"Failure";

[[noreturn]] void failStart(const QString& text,
                            GatewayException::Kind kind = GatewayException::Fatal) {
    throw GatewayException(kind, endMessage(text), false);
}

// The settings file and the group as given, or an empty text if arguments are missing.
QString argumentText(int argc, char** argv) {
    if (argc < kArguments) {
        return {};
    }
    return QString::fromUtf8(argv[1]) + u' ' + QString::fromUtf8(argv[2]);
}

void logEnd(const QString& arguments, QStringView status) {
    log::info(u"Quorin Gateway Http Server End [Argument] " + arguments + u" : [Status] " + status);
}

void takeGuard(platform::InstanceGuard& guard) {
    if (!retry([&guard] { return guard.take(); })) {
        failStart(u"Duplicate execution of applications"_s, GatewayException::DuplicateInstance);
    }
}

bool isPrimary(const char* group) {
    if (std::strcmp(group, "primary") == 0) {
        return true;
    }
    if (std::strcmp(group, "secondary") != 0) {
        failStart(u"the second argument (" + QString::fromUtf8(group) + u") is not parsable.");
    }
    return false;
}

void logStart(const QString& arguments) {
    const GatewaySettings& settings = GatewaySettings::instance();
    const bool isQueueUsed = settings.IsMadeClientRequestWaited;
    log::info(u"Quorin Gateway Http Server Start [Argument] " + arguments);
    log::info(u"Reply mode - " + (isQueueUsed ? QStringView(u"Uses request queue.")
                                              : QStringView(u"Legacy (~v5.0.8)")));
    if (isQueueUsed) {
        log::info(u"MaxLargeFileRequest/MaxUserSession - " +
                  QString::number(settings.MaxLargeFileRequest) + u'/' +
                  QString::number(settings.MaxUserSession));
    }
}

void serve(QCoreApplication& application) {
    const GatewaySettings& settings = GatewaySettings::instance();
    QThreadPool& pool = *QThreadPool::globalInstance();
    pool.setMaxThreadCount(settings.MaxUserSession);
    pool.setExpiryTimeout(-1); // QueueWatcher relies on threads that have been started once
    TcpServer server(&application, documentRoot());
    if (!server.listen(QHostAddress::AnyIPv4, static_cast<quint16>(settings.Port))) {
        failStart(u"failed to tcp server listening:" + server.errorString());
    }
    QCoreApplication::exec();
}

} // namespace

RunOutcome runGateway(QCoreApplication& application, int argc, char** argv) {
    platform::InstanceGuard guard(platform::kInstanceGuardKey.toString());
    try {
        takeGuard(guard);
        if (argc != kArguments) {
            failStart(u"The arguments must be three"_s);
        }
        if (!platform::shellFoldersAvailable()) {
            return RunOutcome::Failed; // without a log line: the log is not set up yet
        }
        const bool primary = isPrimary(argv[2]);
        loadSettings(settingsPath(argv[1]), primary);
        logStart(argumentText(argc, argv));
        serve(application);
        logEnd(argumentText(argc, argv), kSuccess);
        QuorinGatewayApplicationLogger::shutDownLog();
        return RunOutcome::Stopped;
    } catch (const GatewayException& exception) {
        log::error(exception.message());
        application.setProperty(platform::kStartErrorProperty, exception.message());
        switch (exception.kind()) {
        case GatewayException::Fatal:
            logEnd(argumentText(argc, argv), kFailure);
            QuorinGatewayApplicationLogger::shutDownLog();
            return RunOutcome::Failed;
        case GatewayException::DuplicateInstance:
            QuorinGatewayApplicationLogger::shutDownLog();
            return RunOutcome::DuplicateInstance;
        default:
            return RunOutcome::Stopped;
        }
    }
}

} // namespace quorin

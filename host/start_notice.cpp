#include "start_notice.h"

#include "check/finding_codes.h"
#include "check/start_check.h"
#include "check_report.h"
#include "config/settings_file.h"
#include "log/application_logger.h"
#include "platform/terminal.h"
#include "server/document_root.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr QStringView kProgram = u"quorin-gateway: ";

} // namespace

QString servingText(const check::GatewayStatus& status, const QString& documentRoot,
                    const QString& logFolder) {
    const QString port =
        status.port == 0 ? u"a free port"_s : u"port "_s + QString::number(status.port);
    return kProgram + (status.isHttps ? u"serves HTTPS on "_s : u"serves HTTP on "_s) + port +
           u" of all IPv4 addresses, from " + QDir::toNativeSeparators(documentRoot) + u'\n' +
           kProgram + u"log files are in " + QDir::toNativeSeparators(logFolder) + u'\n' +
           kProgram + u"stop it with Ctrl-C or 'quorin-gateway stop'\n";
}

QString failedStartText(const check::Findings& findings, const QString& logFolder) {
    QString text;
    for (const check::Finding& finding : findings) {
        if (finding.failsStart || finding.code == check::code::kGatewayRunning) {
            text += kProgram + u"the start failed: " + describe(finding) + u'\n';
        }
    }
    return text.isEmpty() ? kProgram + u"the start failed; the reason is in the log in " +
                                QDir::toNativeSeparators(logFolder) + u'\n'
                          : text;
}

StartNotice::StartNotice(GatewayArguments arguments, check::GatewayStatus status)
    : arguments_(std::move(arguments)),
      status_(std::move(status)),
      isEnabled_(platform::isErrorOutputTerminal()) {}

void StartNotice::onStarting() {
    if (!isEnabled_) {
        return;
    }
    std::string program = arguments_.program;
    char* arguments[] = {program.data(), nullptr};
    int count = 1;
    const QCoreApplication application(count, arguments);
    const check::Findings findings =
        check::checkStart(settingsPath(arguments_.settings.c_str()), arguments_.group == "primary");
    failureText_ = failedStartText(findings, logFolder()).toStdString();
}

void StartNotice::onStarted() {
    if (isEnabled_) {
        std::fputs(qUtf8Printable(servingText(status_, documentRoot(), logFolder())), stderr);
    }
}

void StartNotice::onStartFailed(int /*exitCode*/, const QString& /*reason*/) {
    std::fputs(failureText_.c_str(), stderr); // empty if the library could not be loaded
}

} // namespace quorin

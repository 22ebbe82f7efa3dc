#include "start_notice.h"

#include "check/finding_codes.h"
#include "check/running_gateway.h"
#include "check/start_check.h"
#include "check_report.h"
#include "config/settings_file.h"
#include "log/application_logger.h"
#include "platform/terminal.h"
#include "server/document_root.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr QStringView kProgram = u"quorin-gateway: ";

// Printed when the process exits before the gateway serves; empty if nothing is to be printed. No
// QString: when the process exits, Qt may have been shut down.
std::string& failureText() {
    static std::string text;
    return text;
}

void printFailure() {
    std::fputs(failureText().c_str(), stderr);
}

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

StartNotice::StartNotice(const std::string& program, const std::string& settings,
                         const std::string& group)
    : isEnabled_(platform::isErrorOutputTerminal()) {
    if (!isEnabled_) {
        return;
    }
    std::string name = program;
    char* arguments[] = {name.data(), nullptr};
    int count = 1;
    const QCoreApplication application(count, arguments);
    const check::Findings findings =
        check::checkStart(settingsPath(settings.c_str()), group == "primary");
    failureText() = failedStartText(findings, logFolder()).toStdString();
    std::atexit(&printFailure);
}

void StartNotice::reportServing(const check::GatewayStatus& status) {
    if (isEnabled_) {
        failureText().clear();
        std::fputs(qUtf8Printable(servingText(status, documentRoot(), logFolder())), stderr);
    }
}

void StartNotice::endStart() {
    failureText().clear();
}

} // namespace quorin

#include "check/network_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "config/element_names.h"
#include "config/gateway_exception.h"
#include "platform/control_pipe.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

bool isPortOf(const std::optional<RunningGateway>& running, quint16 port) {
    return running && (!running->status || running->status->port == port);
}

} // namespace

void checkRunningGateway(const std::optional<RunningGateway>& running, Findings& findings) {
    if (!running) {
        return;
    }
    Finding finding;
    finding.severity = Severity::Warning;
    finding.code = code::kGatewayRunning;
    finding.subject = u"gateway"_s;
    if (const std::optional<GatewayStatus>& status = running->status) {
        finding.subject = u"process "_s + QString::number(status->processId);
        finding.value = status->settings + u' ' + status->group;
    }
    finding.reason = u"a gateway runs on this machine; another one would end with exit code 2"_s;
    finding.action = u"Stop it before you start another one."_s;
    findings.push_back(finding);
}

void checkPort(const SettingsRecord& record, const std::optional<RunningGateway>& running,
               Findings& findings) {
    if (!record.isValid(element::kPort)) {
        return;
    }
    const auto port = static_cast<quint16>(record.settings().Port);
    QTcpSocket socket;
    // With the option for reuse that QTcpServer uses: connections that have just been closed do not
    // occupy the port.
    if (socket.bind(QHostAddress::AnyIPv4, port, QAbstractSocket::ShareAddress)) {
        return;
    }
    if (socket.error() == QAbstractSocket::AddressInUseError && isPortOf(running, port)) {
        return;
    }
    Finding finding;
    finding.code = code::kPortUnavailable;
    finding.subject = record.pathOf(element::kPort);
    finding.value = QString::number(port);
    finding.reason = endMessage(u"failed to tcp server listening:" + socket.errorString());
    finding.action = socket.error() == QAbstractSocket::AddressInUseError
                         ? u"Set another port, or stop the program that uses this one."_s
                         : u"Set another port, or allow the gateway's account to use this one."_s;
    finding.failsStart = true;
    findings.push_back(finding);
}

void checkControlPipe(Findings& findings) {
    const QString pipe = platform::kControlPipeName.toString();
    const QString obstacle = platform::obstacleToControlPipe(pipe);
    if (obstacle.isEmpty()) {
        return;
    }
    Finding finding;
    finding.code = code::kPipeUnavailable;
    finding.subject = pipe;
    finding.reason = u"the gateway cannot listen on its control pipe: "_s + obstacle;
    finding.action = u"Set TMPDIR to a folder to which the gateway's account may write."_s;
    finding.failsStart = true;
    findings.push_back(finding);
}

} // namespace quorin::check

#include "status_command.h"

#include "command_line.h"
#include "usage.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace quorin {

QString statusText(const check::RunningGateway& gateway) {
    if (!gateway.status) {
        return u"running; its settings are not known: another program runs the gateway, or it is "
               u"starting or stopping\n"_s;
    }
    const check::GatewayStatus& status = *gateway.status;
    const QString port =
        status.port == 0 ? u"selected by the system"_s : QString::number(status.port);
    return u"running since " + status.since.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"_s) +
           u" as process " + QString::number(status.processId) + u"\nsettings: " + status.settings +
           u' ' + status.group + u"\nport: " + port +
           (status.isHttps ? u" (HTTPS)\n" : u" (HTTP)\n");
}

int statusCommand(const CommandLine& line) {
    if (!line.arguments.empty()) {
        return reportUsageError("'status' takes no arguments");
    }
    const std::optional<check::RunningGateway> gateway = check::findRunningGateway();
    if (!gateway) {
        std::puts("not running");
        return kNotRunning;
    }
    std::fputs(qUtf8Printable(statusText(*gateway)), stdout);
    return kOk;
}

} // namespace quorin

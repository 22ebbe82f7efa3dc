// quorin-gateway: starts and stops the gateway.

#include "exit_codes.h"
#include "gateway_call.h"
#include "gateway_events.h"
#include "platform/command_line.h"
#include "platform/descriptors.h"
#include "platform/event_log.h"
#include "platform/termination.h"
#include "service_command.h"
#include "stop_command.h"

#include <QCoreApplication>

#include <cstdio>
#include <string>
#include <vector>

namespace {

using quorin::kFailed;
using quorin::kOk;
using quorin::kPermissionDenied;
using quorin::kUsageError;

constexpr const char* kUsage = "usage: quorin-gateway run SETTINGS primary|secondary\n"
                               "       quorin-gateway stop\n"
                               "       quorin-gateway --help | --version\n";

constexpr const char* kHelp =
    "\n"
    "run    Runs a gateway with the settings file SETTINGS and its group for the\n"
    "       primary or the secondary gateway, until it is stopped.\n"
    "stop   Tells the gateway on this machine to complete its current requests and\n"
    "       stop. Waits while other controllers hold the gateway's control pipe.\n"
    "\n"
    "Exit codes of run:   0   stopped\n"
    "                     1   fatal error\n"
    "                     2   another gateway runs on this machine\n"
    "                     64  wrong usage\n"
    "Exit codes of stop:  0   command delivered\n"
    "                     1   no gateway listens for commands on this machine\n"
    "                     64  wrong usage\n"
    "                     77  no permission to open the gateway's control pipe\n"
    "\n"
    "Ctrl-C or SIGTERM stops the gateway in the same way; a second one ends it at\n"
    "once.\n"
    "\n"
    "The gateway writes its errors to its log.\n";

int reportUsageError(const std::string& message) {
    std::fprintf(stderr, "quorin-gateway: %s; try 'quorin-gateway --help'\n", message.c_str());
    return kUsageError;
}

int run(const std::string& program, const std::string& settings, const std::string& group) {
    quorin::platform::raiseDescriptorLimit();
    const quorin::platform::TerminationWatch watch(quorin::stopOwnGateway);
    quorin::GatewayEvents events(quorin::platform::EventLog::ofProgram(),
                                 QString::fromStdString(settings), QString::fromStdString(group));
    return quorin::callGateway(program, settings, group, events);
}

int stop(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    switch (quorin::sendStopCommand(quorin::StopTarget::AnyGateway)) {
    case quorin::StopResult::Delivered:
        return kOk;
    case quorin::StopResult::AccessDenied:
        std::fprintf(stderr, "quorin-gateway: permission denied: cannot open the gateway's control "
                             "pipe\n");
        return kPermissionDenied;
    case quorin::StopResult::NoGateway:
        break;
    }
    std::fprintf(stderr, "quorin-gateway: no gateway listens for commands on this machine\n");
    return kFailed;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = quorin::platform::commandLine(argc, argv);
    if (arguments.size() < 2) {
        return reportUsageError("missing command");
    }
    const std::string& command = arguments[1];
    if (command == "--help" || command == "-h") {
        std::printf("%s%s%s%s", kUsage, quorin::kServiceUsage, kHelp, quorin::kServiceHelp);
        return kOk;
    }
    if (command == "--version") {
        std::printf("quorin-gateway %s\n", QUORIN_VERSION);
        return kOk;
    }
    if (command == "run") {
        if (arguments.size() != 4) {
            return reportUsageError("'run' requires a settings file and 'primary' or 'secondary'");
        }
        if (arguments[3] != "primary" && arguments[3] != "secondary") {
            return reportUsageError("unknown group '" + arguments[3] +
                                    "': must be 'primary' or 'secondary'");
        }
        return run(arguments[0], arguments[2], arguments[3]);
    }
    if (command == "stop") {
        return arguments.size() == 2 ? stop(argc, argv)
                                     : reportUsageError("'stop' takes no arguments");
    }
    if (command == "service") {
        return quorin::serviceCommand(arguments);
    }
    return reportUsageError("unknown command '" + command + "'");
}

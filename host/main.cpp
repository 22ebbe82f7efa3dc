// quorin-gateway: runs, checks, watches and stops the gateway, as a program or as a service.

#include "check_command.h"
#include "command_line.h"
#include "platform/command_line.h"
#include "platform/service.h"
#include "run_command.h"
#include "service_command.h"
#include "status_command.h"
#include "stop_command.h"
#include "usage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

using quorin::CommandLine;

struct Command {
    std::string_view name;
    int (*run)(const CommandLine&);
    const char* help;
};

constexpr std::array kCommands{
    Command{"run", quorin::runCommand, quorin::kRunHelp},
    Command{"check", quorin::checkCommand, quorin::kCheckHelp},
    Command{"status", quorin::statusCommand, quorin::kStatusHelp},
    Command{"stop", quorin::stopCommand, quorin::kStopHelp},
    Command{"service", quorin::serviceCommand, quorin::kServiceHelp},
};

// The command 'service' is only shown where it can be used.
std::string help() {
    const bool hasServices = quorin::platform::servicesAvailable();
    return std::string("usage: quorin-gateway run SETTINGS primary|secondary\n"
                       "       quorin-gateway check SETTINGS primary|secondary [--json]\n"
                       "       quorin-gateway status\n"
                       "       quorin-gateway stop\n") +
           (hasServices ? "       quorin-gateway service install|stop|uninstall ...\n" : "") +
           "       quorin-gateway COMMAND --help\n"
           "       quorin-gateway --help | --version\n"
           "\n"
           "run      Runs a gateway until it is stopped.\n"
           "check    Reports what would make the start of a gateway fail, or the gateway\n"
           "         serve other than it was set up to. Changes nothing.\n"
           "status   Reports whether a gateway runs on this machine.\n"
           "stop     Tells the gateway on this machine to complete its current requests\n"
           "         and stop.\n" +
           (hasServices ? "service  Installs, stops or removes the gateway as a service.\n" : "") +
           "\n"
           "SETTINGS is the settings file. The gateway uses the settings of its group,\n"
           "primary or secondary.\n"
           "\n"
           "'quorin-gateway COMMAND --help' lists the options and exit codes of a command.\n"
           "The exit code is 64 if the program is used wrongly.\n";
}

bool isHelpOption(const std::string& argument) {
    return argument == "--help" || argument == "-h";
}

int print(const std::string& text) {
    std::fputs(text.c_str(), stdout);
    return quorin::kOk;
}

int execute(const Command& command, const CommandLine& line) {
    if (line.arguments.size() == 1 && isHelpOption(line.arguments.front())) {
        return print(command.help);
    }
    return command.run(line);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = quorin::platform::commandLine(argc, argv);
    if (arguments.size() < 2) {
        return quorin::reportUsageError("missing command");
    }
    const std::string& name = arguments[1];
    if (isHelpOption(name)) {
        return print(help());
    }
    if (name == "--version") {
        return print("quorin-gateway " QUORIN_VERSION "\n");
    }
    const auto* const command =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [&name](const Command& candidate) { return candidate.name == name; });
    if (command == kCommands.end()) {
        return quorin::reportUsageError("unknown command '" + name + "'");
    }
    return execute(*command, {argc, argv, arguments[0], {arguments.begin() + 2, arguments.end()}});
}

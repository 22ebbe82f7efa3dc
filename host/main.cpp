// quorin-gateway: starts and stops the gateway.

#include "control.h"
#include "platform/command_line.h"
#include "platform/descriptors.h"
#include "platform/heap.h"
#include "platform/shared_library.h"
#include "platform/termination.h"

#include <QCoreApplication>
#include <QThread>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

enum ExitCode : int { kOk = 0, kNotDone = 1, kWrongUsage = 64 };

constexpr const char* kUsage = "usage: quorin-gateway run SETTINGS primary|secondary\n"
                               "       quorin-gateway stop\n"
                               "       quorin-gateway --help | --version\n";

constexpr const char* kHelp =
    "\n"
    "run    serves files as the settings file SETTINGS says, with its group for the\n"
    "       primary or the secondary gateway, until it is stopped; exit code 0 then,\n"
    "       1 after a fatal error, 2 when another gateway runs on this machine\n"
    "stop   tells the gateway that runs on this machine to finish what it serves and\n"
    "       to stop; exit code 0 when it was told, 1 when no gateway listens\n"
    "\n"
    "A gateway that is interrupted (Ctrl-C, SIGTERM) stops as if it was told to; when\n"
    "it is interrupted again it ends at once.\n"
    "\n"
    "Errors of the run are in the gateway's log.\n";

int complainOfUsage(const std::string& what) {
    std::fprintf(stderr, "quorin-gateway: %s; try 'quorin-gateway --help'\n", what.c_str());
    return kWrongUsage;
}

// Stops the gateway in this process, which completes its current requests first. Returns false if
// the gateway does not listen for commands (yet).
bool stopOnTermination() {
    bool isStopping = false;
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { isStopping = quorin::tellToStop(quorin::Gateway::OfThisProcess); }));
    thread->start();
    thread->wait();
    return isStopping;
}

int run(std::string program, std::string settings, std::string group) {
    platform::raiseDescriptorLimit();
    using MainFunc = int(int, char**);
    const auto library = platform::SharedLibrary::load(platform::gatewayLibraryName());
    auto* const mainFunc = library.function<MainFunc>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "quorin-gateway: cannot load the gateway library %s: %s\n",
                     platform::gatewayLibraryName(), platform::SharedLibrary::lastError());
        return kNotDone;
    }
    const platform::TerminationWatch watch(stopOnTermination);
    std::vector<char*> arguments{program.data(), settings.data(), group.data(), nullptr};
    return mainFunc(static_cast<int>(arguments.size() - 1), arguments.data());
}

int stop(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (!quorin::tellToStop(quorin::Gateway::Any)) {
        std::fprintf(stderr, "quorin-gateway: no gateway listens for commands on this machine\n");
        return kNotDone;
    }
    return kOk;
}

} // namespace

int main(int argc, char** argv) {
    platform::suitHeapToWorkers();
    const std::vector<std::string> arguments = platform::commandLine(argc, argv);
    if (arguments.size() < 2) {
        return complainOfUsage("a command is missing");
    }
    const std::string& command = arguments[1];
    if (command == "--help" || command == "-h") {
        std::printf("%s%s", kUsage, kHelp);
        return kOk;
    }
    if (command == "--version") {
        std::printf("quorin-gateway %s\n", QUORIN_VERSION);
        return kOk;
    }
    if (command == "run") {
        if (arguments.size() != 4) {
            return complainOfUsage("'run' takes a settings file and 'primary' or 'secondary'");
        }
        if (arguments[3] != "primary" && arguments[3] != "secondary") {
            return complainOfUsage("'" + arguments[3] + "' is neither 'primary' nor 'secondary'");
        }
        return run(arguments[0], arguments[2], arguments[3]);
    }
    if (command == "stop") {
        return arguments.size() == 2 ? stop(argc, argv)
                                     : complainOfUsage("'stop' takes no arguments");
    }
    return complainOfUsage("'" + command + "' is no command");
}

#include "run_command.h"

#include "check/running_gateway.h"
#include "check/settings_record.h"
#include "command_line.h"
#include "config/settings_file.h"
#include "event_loop_hook.h"
#include "platform/descriptors.h"
#include "platform/held_file.h"
#include "platform/shared_library.h"
#include "platform/termination.h"
#include "start_notice.h"
#include "stop_command.h"
#include "usage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorin {

namespace {

// Stops the gateway in this process, which completes its current requests first. Returns false if
// the gateway does not listen for commands (yet).
bool stopOnTermination() {
    bool isStopping = false;
    const std::unique_ptr<QThread> thread(QThread::create([&isStopping] {
        isStopping = sendStopCommand(StopTarget::GatewayOfThisProcess) == StopResult::Delivered;
    }));
    thread->start();
    thread->wait();
    return isStopping;
}

// Returns what the gateway of this process states about itself from now on.
check::GatewayStatus currentStatus(const std::string& settingsArgument, const std::string& group) {
    const QString path = settingsPath(settingsArgument.c_str());
    const check::SettingsRecord record(path, group == "primary");
    return {.processId = QCoreApplication::applicationPid(),
            .since = QDateTime::currentDateTimeUtc(),
            .settings = QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()),
            .group = QString::fromStdString(group),
            .port = static_cast<quint16>(record.settings().Port),
            .isHttps = record.settings().HttpsEnabled};
}

int run(std::string program, std::string settings, std::string group) {
    platform::raiseDescriptorLimit();
    using MainFunc = int(int, char**);
    const auto library = platform::SharedLibrary::load(platform::gatewayLibraryName());
    auto* const mainFunc = library.function<MainFunc>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "quorin-gateway: cannot load the gateway library %s: %s\n",
                     platform::gatewayLibraryName(), platform::SharedLibrary::lastError());
        return kFailed;
    }
    StartNotice notice(program, settings, group);
    const check::GatewayStatus status = currentStatus(settings, group);
    std::unique_ptr<platform::HeldFile> statusFile;
    const EventLoopHook hook(
        [&] {
            check::GatewayStatus now = status;
            now.since = QDateTime::currentDateTimeUtc();
            statusFile = platform::HeldFile::create(check::gatewayStatusPath(), now.toJson());
            notice.reportServing(now);
        },
        [&statusFile] { statusFile.reset(); });
    const platform::TerminationWatch watch(stopOnTermination);
    std::vector<char*> arguments{program.data(), settings.data(), group.data(), nullptr};
    const int result = mainFunc(static_cast<int>(arguments.size() - 1), arguments.data());
    notice.endStart();
    return result;
}

} // namespace

int runCommand(const CommandLine& line) {
    if (line.arguments.size() != 2) {
        return reportUsageError("'run' requires a settings file and 'primary' or 'secondary'");
    }
    if (const std::string error = groupError(line.arguments[1]); !error.empty()) {
        return reportUsageError(error);
    }
    return run(line.program, line.arguments[0], line.arguments[1]);
}

} // namespace quorin

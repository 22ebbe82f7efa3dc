#include "service_command.h"

#include "command_line.h"
#include "gateway_call.h"
#include "gateway_events.h"
#include "platform/descriptors.h"
#include "platform/event_log.h"
#include "platform/protected_folders.h"
#include "platform/service.h"
#include "service_arguments.h"
#include "service_folders.h"
#include "status_file.h"
#include "usage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <optional>
#include <variant>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using platform::ServiceError;

constexpr QStringView kDescription =
    u"Serves firmware, patterns, plugins and notifications to the workstations of the facility.";

int report(int exitCode, const QString& message) {
    std::fprintf(stderr, "quorin-gateway: %s\n", qUtf8Printable(message));
    return exitCode;
}

int reportError(const ServiceError& error) {
    switch (error.kind) {
    case ServiceError::Kind::AccessDenied:
        return report(kPermissionDenied,
                      u"permission denied: run this command as an administrator ("_s + error.text +
                          u')');
    case ServiceError::Kind::StartedByHand:
        return report(kUsageError, u"'service run' is only for the service manager; start the "
                                   u"service with 'sc start NAME', or use 'quorin-gateway run'"_s);
    default:
        return report(kFailed, error.text);
    }
}

void printUnsafePaths(const std::vector<platform::UnsafePath>& paths) {
    for (const platform::UnsafePath& unsafe : paths) {
        const QString detail =
            unsafe.writers.isEmpty() ? unsafe.error : unsafe.writers.join(u", "_s);
        std::fprintf(stderr, "  %s: %s\n", qUtf8Printable(unsafe.path), qUtf8Printable(detail));
    }
}

// Other accounts could replace what the service executes and reads.
void warnOfUnsafeFiles(const QString& settings) {
    for (const QString& path : {QCoreApplication::applicationDirPath(), settings}) {
        constexpr int enough = 5;
        const auto unsafe = platform::findUnsafePaths(path, enough);
        if (!unsafe.empty()) {
            report(kOk, u"warning: accounts other than administrators can change"_s);
            printUnsafePaths(unsafe);
        }
    }
}

int refuseFolder(const QString& folder, const std::vector<platform::UnsafePath>& unsafe) {
    report(kFailed, folder + u" exists, and accounts other than administrators can change it:");
    printUnsafePaths(unsafe);
    std::fprintf(stderr, "Check the content of the folder. Then run these commands as an "
                         "administrator, and try again:\n");
    for (const QString& command : platform::repairCommands(folder)) {
        std::fprintf(stderr, "  %s\n", qUtf8Printable(command));
    }
    return kFailed;
}

int createFolders(const QString& serviceName) {
    const auto folders = serviceFolders();
    const QString& top = folders.front().path;
    const auto unsafe = platform::findUnsafePaths(top);
    if (!unsafe.empty()) {
        return refuseFolder(top, unsafe);
    }
    if (const auto error = platform::createProtectedFolders(folders, serviceName)) {
        return report(kFailed, u"cannot create the folders: "_s + *error);
    }
    return kOk;
}

// Copies `sample` to `settings`, unless `sample` is empty or there are settings.
int copySample(const QString& sample, const QString& settings) {
    QFile source(sample);
    if (!sample.isEmpty() && !QFileInfo::exists(settings) && !source.copy(settings)) {
        return report(kFailed, u"cannot copy "_s + sample + u" to " + settings + u": " +
                                   source.errorString());
    }
    return kOk;
}

int registerSource(const platform::ServiceDefinition& service) {
    const auto error = platform::registerEventSource(service.name, service.command.constFirst());
    return error ? report(kFailed, u"cannot register the event source: "_s + *error) : kOk;
}

int createService(const platform::ServiceDefinition& service) {
    if (const int code = createFolders(service.name); code != kOk) {
        return code;
    }
    const auto error = platform::installService(service);
    return error ? reportError(*error) : kOk;
}

int install(const CommandLine& line, const ServiceArguments& arguments) {
    const QCoreApplication application(line.argc, line.argv); // finds the program's path
    if (const auto error = platform::checkInstallPermission()) {
        return reportError(*error);
    }
    // The service is started in another folder.
    const QString settings =
        QDir::toNativeSeparators(QFileInfo(arguments.settings).absoluteFilePath());
    const QString program = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
    const bool isDefault = arguments.name == kDefaultServiceName;
    const platform::ServiceDefinition service{
        arguments.name,
        isDefault ? u"Quorin Gateway"_s : u"Quorin Gateway ("_s + arguments.name + u')',
        kDescription.toString(),
        {program, u"service"_s, u"run"_s, u"--name"_s, arguments.name, settings, arguments.group}};
    bool isUpdated = false;
    if (arguments.updates) {
        const auto error = platform::updateService(service);
        isUpdated = !error;
        if (error && error->kind != ServiceError::Kind::NotFound) {
            return reportError(*error);
        }
    }
    // The folders of an existing service keep their access rights: administrators may have granted
    // access to other accounts.
    int code = isUpdated ? kOk : createService(service);
    if (code != kOk) {
        return code;
    }
    code = copySample(arguments.sample, settings);
    code = code == kOk ? registerSource(service) : code;
    if (code != kOk) {
        if (!isUpdated) {
            static_cast<void>(platform::uninstallService(service.name));
        }
        return code;
    }
    warnOfUnsafeFiles(settings);
    if (!QFileInfo::exists(settings)) {
        report(kOk, u"warning: the settings file "_s + settings + u" does not exist yet");
    }
    std::printf("The service %s has been %s. To start it: sc start %s\n",
                qUtf8Printable(service.name), isUpdated ? "updated" : "installed",
                qUtf8Printable(service.name));
    return kOk;
}

int uninstall(const ServiceArguments& arguments) {
    if (const auto error = platform::uninstallService(arguments.name)) {
        return reportError(*error);
    }
    if (const auto error = platform::removeEventSource(arguments.name)) {
        return report(kFailed, u"cannot remove the event source: "_s + *error);
    }
    std::printf("The service %s has been removed. Its folders remain.\n",
                qUtf8Printable(arguments.name));
    return kOk;
}

int stop(const ServiceArguments& arguments) {
    if (const auto error = platform::stopService(arguments.name)) {
        return reportError(*error);
    }
    std::printf("The service %s has been stopped.\n", qUtf8Printable(arguments.name));
    return kOk;
}

// Passes the progress of the gateway on to the service manager.
class ServiceObserver final : public GatewayObserver {
public:
    explicit ServiceObserver(platform::ServiceProcess& service) : service_(service) {}

    void onStarted() override { service_.reportRunning(); }
    void onStopped() override { service_.reportStopped(kOk); }
    void onStartFailed(int exitCode, const QString& /*reason*/) override {
        service_.reportStopped(exitCode);
    }

private:
    platform::ServiceProcess& service_;
};

int run(const CommandLine& line, const ServiceArguments& service) {
    platform::ServiceProcess process(stopOwnGateway);
    if (const auto error = process.connect(service.name)) {
        return reportError(*error);
    }
    platform::raiseDescriptorLimit();
    const GatewayArguments arguments{line.program, service.settings.toStdString(),
                                     service.group.toStdString()};
    StatusFile statusFile(currentStatus(arguments));
    GatewayEvents events(platform::EventLog::ofService(service.name), arguments);
    // The last one: the process may be ended as soon as the service has stopped.
    ServiceObserver observer(process);
    return callGateway(arguments, {&statusFile, &events, &observer});
}

} // namespace

int serviceCommand(const CommandLine& line) {
    if (!platform::servicesAvailable()) {
        return report(kUsageError, u"'service' is for Windows; on this system, use the systemd "
                                   u"unit quorin-gateway.service"_s);
    }
    const auto parsed = parseServiceArguments(line.arguments);
    if (const auto* const error = std::get_if<std::string>(&parsed)) {
        return reportUsageError(*error);
    }
    const auto& service = std::get<ServiceArguments>(parsed);
    switch (service.action) {
    case ServiceArguments::Action::Install:
        return install(line, service);
    case ServiceArguments::Action::Uninstall:
        return uninstall(service);
    case ServiceArguments::Action::Stop:
        return stop(service);
    case ServiceArguments::Action::Run:
        break;
    }
    return run(line, service);
}

} // namespace quorin

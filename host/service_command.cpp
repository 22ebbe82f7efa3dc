#include "service_command.h"

#include "exit_codes.h"
#include "gateway_call.h"
#include "gateway_events.h"
#include "platform/descriptors.h"
#include "platform/event_log.h"
#include "platform/protected_folders.h"
#include "platform/service.h"
#include "service_arguments.h"
#include "service_folders.h"

#include <QCoreApplication>
#include <QDir>
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

int install(const ServiceArguments& arguments) {
    int argumentCount = 0;
    const QCoreApplication application(argumentCount, nullptr); // finds the program's path
    if (const auto error = platform::checkInstallPermission()) {
        return reportError(*error);
    }
    const auto folders = serviceFolders();
    const QString& top = folders.front().path;
    const auto unsafe = platform::findUnsafePaths(top);
    if (!unsafe.empty()) {
        return refuseFolder(top, unsafe);
    }
    if (const auto error = platform::createProtectedFolders(folders, arguments.name)) {
        return report(kFailed, u"cannot create the folders: "_s + *error);
    }

    // The service is started in another folder.
    const QString settings =
        QDir::toNativeSeparators(QFileInfo(arguments.settings).absoluteFilePath());
    const QString program = QDir::toNativeSeparators(QCoreApplication::applicationFilePath());
    const bool isDefault = arguments.name == kDefaultServiceName;
    if (const auto error = platform::installService(
            {arguments.name,
             isDefault ? u"Quorin Gateway"_s : u"Quorin Gateway ("_s + arguments.name + u')',
             kDescription.toString(),
             {program, u"service"_s, u"run"_s, u"--name"_s, arguments.name, settings,
              arguments.group}})) {
        return reportError(*error);
    }
    if (const auto error = platform::registerEventSource(arguments.name, program)) {
        static_cast<void>(platform::uninstallService(arguments.name));
        return report(kFailed, u"cannot register the event source: "_s + *error);
    }
    warnOfUnsafeFiles(settings);
    if (!QFileInfo::exists(settings)) {
        report(kOk, u"warning: the settings file "_s + settings + u" does not exist yet");
    }
    std::printf("The service %s has been installed. To start it: sc start %s\n",
                qUtf8Printable(arguments.name), qUtf8Printable(arguments.name));
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

// Passes what happens to the gateway on to the service manager and the event log.
class ServiceObserver final : public GatewayObserver {
public:
    ServiceObserver(platform::ServiceProcess& service, const ServiceArguments& arguments)
        : service_(service),
          events_(platform::EventLog::ofService(arguments.name), arguments.settings,
                  arguments.group) {}

    void onStarted() override {
        service_.reportRunning();
        events_.onStarted();
    }
    void onStopped() override {
        events_.onStopped();
        service_.reportStopped(kOk);
    }
    void onStartFailed(int exitCode, const QString& reason) override {
        events_.onStartFailed(exitCode, reason);
        service_.reportStopped(exitCode);
    }

private:
    platform::ServiceProcess& service_;
    GatewayEvents events_;
};

int run(const std::string& program, const ServiceArguments& arguments) {
    platform::ServiceProcess service(stopOwnGateway);
    if (const auto error = service.connect(arguments.name)) {
        return reportError(*error);
    }
    platform::raiseDescriptorLimit();
    ServiceObserver observer(service, arguments);
    return callGateway(program, arguments.settings.toStdString(), arguments.group.toStdString(),
                       observer);
}

} // namespace

int serviceCommand(const std::vector<std::string>& arguments) {
    if (!platform::servicesAvailable()) {
        return report(kUsageError, u"'service' is for Windows; on this system, use the systemd "
                                   u"unit quorin-gateway.service"_s);
    }
    const auto parsed = parseServiceArguments(arguments);
    if (const auto* const error = std::get_if<std::string>(&parsed)) {
        return report(kUsageError,
                      QString::fromStdString(*error) + u"; try 'quorin-gateway --help'");
    }
    const auto& service = std::get<ServiceArguments>(parsed);
    switch (service.action) {
    case ServiceArguments::Action::Install:
        return install(service);
    case ServiceArguments::Action::Uninstall:
        return uninstall(service);
    case ServiceArguments::Action::Run:
        break;
    }
    return run(arguments.front(), service);
}

} // namespace quorin

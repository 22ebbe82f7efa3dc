#include "platform/service.h"

#include "platform/windows/command_line_text.h"
#include "platform/windows/handle.h"
#include "platform/windows/service_functions.h"

#include <array>
#include <chrono>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

// How long a shutdown of the system and uninstallService() wait until the service has stopped.
constexpr std::chrono::minutes kStopLimit{3};
// How long the process of a service may run after it has reported that the service has stopped.
constexpr seconds kEndLimit{30};
constexpr milliseconds kPollInterval{250};
// After the last delay, the system repeats it.
constexpr std::array<seconds, 3> kRestartDelays{seconds(5), seconds(30), seconds(60)};
// Without a crash for this time, the delays begin again with the first.
constexpr std::chrono::hours kFailureReset{24};

DWORD inMs(milliseconds time) {
    return static_cast<DWORD>(time.count());
}

class ServiceHandle {
public:
    ServiceHandle(const ServiceManagerFunctions& system, SC_HANDLE handle)
        : system_(system), handle_(handle) {}
    ~ServiceHandle() {
        if (handle_ != nullptr) {
            system_.close(handle_);
        }
    }
    ServiceHandle(const ServiceHandle&) = delete;
    ServiceHandle& operator=(const ServiceHandle&) = delete;

    [[nodiscard]] SC_HANDLE get() const { return handle_; }

private:
    const ServiceManagerFunctions& system_;
    SC_HANDLE handle_;
};

// The error of the last call.
ServiceError lastError(const QString& step) {
    const DWORD code = GetLastError();
    ServiceError error{ServiceError::Kind::Other,
                       u"cannot "_s + step + u": " + qt_error_string(static_cast<int>(code))};
    if (code == ERROR_ACCESS_DENIED) {
        error.kind = ServiceError::Kind::AccessDenied;
    } else if (code == ERROR_SERVICE_EXISTS) {
        error.kind = ServiceError::Kind::AlreadyExists;
    } else if (code == ERROR_SERVICE_DOES_NOT_EXIST) {
        error.kind = ServiceError::Kind::NotFound;
    }
    return error;
}

// The system replaces the names of environment variables between percent signs in the command line
// of a service. There is no way to quote them.
bool containsVariables(const ServiceManagerFunctions& system, const QString& commandLine) {
    const DWORD size = system.expandVariables(wide(commandLine), nullptr, 0);
    std::wstring expanded(size, L'\0');
    const DWORD written = system.expandVariables(wide(commandLine), expanded.data(), size);
    return written == 0 || written > size ||
           QString::fromWCharArray(expanded.c_str()) != commandLine;
}

std::optional<ServiceError> checkCommand(const ServiceManagerFunctions& system,
                                         const QString& command) {
    if (containsVariables(system, command)) {
        return ServiceError{ServiceError::Kind::Other,
                            u"the system would replace a part between percent signs by an "
                            u"environment variable in the command line "_s +
                                command};
    }
    return std::nullopt;
}

struct Setting {
    DWORD level;
    void* value;
    QStringView step;
};

std::optional<ServiceError> configure(const ServiceManagerFunctions& system, SC_HANDLE service,
                                      const ServiceDefinition& definition) {
    std::wstring text = definition.description.toStdWString();
    SERVICE_DESCRIPTIONW description{text.data()};
    SERVICE_DELAYED_AUTO_START_INFO delayed{TRUE};
    std::vector<SC_ACTION> restarts;
    for (const seconds delay : kRestartDelays) {
        restarts.push_back({SC_ACTION_RESTART, inMs(delay)});
    }
    SERVICE_FAILURE_ACTIONSW actions{};
    actions.dwResetPeriod = static_cast<DWORD>(seconds(kFailureReset).count());
    actions.cActions = static_cast<DWORD>(restarts.size());
    actions.lpsaActions = restarts.data();
    // False: a service that reports that it stopped with an error is not restarted. Otherwise wrong
    // settings would restart it again and again.
    SERVICE_FAILURE_ACTIONS_FLAG onlyCrashes{FALSE};
    SERVICE_PRESHUTDOWN_INFO preshutdown{inMs(kStopLimit)};
    // Adds the service's identifier to the token even if an administrator changes the account, so
    // that the rights to the folders remain.
    SERVICE_SID_INFO identifier{SERVICE_SID_TYPE_UNRESTRICTED};
    const Setting settings[] = {
        {SERVICE_CONFIG_DESCRIPTION, &description, u"set the description"},
        {SERVICE_CONFIG_DELAYED_AUTO_START_INFO, &delayed, u"set the delayed start"},
        {SERVICE_CONFIG_FAILURE_ACTIONS, &actions, u"set the restart after a crash"},
        {SERVICE_CONFIG_FAILURE_ACTIONS_FLAG, &onlyCrashes, u"limit the restart to crashes"},
        {SERVICE_CONFIG_PRESHUTDOWN_INFO, &preshutdown, u"set the time limit for a shutdown"},
        {SERVICE_CONFIG_SERVICE_SID_INFO, &identifier, u"set the service's identifier"},
    };
    for (const Setting& setting : settings) {
        // Implementations of the service manager in other systems lack some of the settings.
        if (system.changeConfig(service, setting.level, setting.value) == FALSE &&
            GetLastError() != ERROR_INVALID_LEVEL) {
            return lastError(setting.step.toString());
        }
    }
    return std::nullopt;
}

// Keeps a mistyped name from removing or changing another service.
bool isGatewayService(const ServiceManagerFunctions& system, SC_HANDLE service) {
    constexpr DWORD maxSize = 8192; // of the system
    alignas(QUERY_SERVICE_CONFIGW) std::array<BYTE, maxSize> buffer{};
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    DWORD needed = 0;
    if (system.queryConfig(service, config, maxSize, &needed) == FALSE) {
        return false;
    }
    const QStringList command =
        commandLineArguments(QString::fromWCharArray(config->lpBinaryPathName));
    return command.mid(1, 2) == QStringList{u"service"_s, u"run"_s};
}

// Calls `action` with a handle for `access` to the service `name`, if that is a gateway.
template<typename Action>
std::optional<ServiceError> withGatewayService(const ServiceManagerFunctions& system,
                                               const QString& name, DWORD access,
                                               const Action& action) {
    const ServiceHandle manager(system, system.openManager(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (manager.get() == nullptr) {
        return lastError(u"open the service manager"_s);
    }
    const ServiceHandle service(
        system, system.openService(manager.get(), wide(name), access | SERVICE_QUERY_CONFIG));
    if (service.get() == nullptr) {
        return lastError(u"open the service"_s);
    }
    if (!isGatewayService(system, service.get())) {
        return ServiceError{ServiceError::Kind::Other,
                            u"the service "_s + name + u" does not run a gateway"};
    }
    return action(service.get());
}

// Returns nothing, with the error of the last call, if the service cannot be queried.
std::optional<SERVICE_STATUS_PROCESS> statusOf(const ServiceManagerFunctions& system,
                                               SC_HANDLE service) {
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    if (system.queryStatus(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                           sizeof(status), &needed) == FALSE) {
        return std::nullopt;
    }
    return status;
}

// Returns null if the service has stopped, or if this account may not open its process.
Handle openProcessOf(const ServiceManagerFunctions& system, SC_HANDLE service) {
    const auto status = statusOf(system, service);
    return status && status->dwProcessId != 0
               ? ownHandle(system.openProcess(SYNCHRONIZE, FALSE, status->dwProcessId))
               : nullptr;
}

// Returns an error if the service has not stopped within `limit`, or its process has not ended.
std::optional<ServiceError> stopAndWait(const ServiceManagerFunctions& system, SC_HANDLE service,
                                        std::optional<milliseconds> limit) {
    // Opened first: the service manager does not report the process of a stopped service, which may
    // still be running and using its files.
    const Handle process = openProcessOf(system, service);
    for (milliseconds waited{0};; waited += kPollInterval) {
        const auto status = statusOf(system, service);
        if (!status) {
            return lastError(u"query the service"_s);
        }
        if (status->dwCurrentState == SERVICE_STOPPED) {
            break;
        }
        if (limit && waited >= *limit) {
            return ServiceError{ServiceError::Kind::Other, u"the service is still stopping"_s};
        }
        SERVICE_STATUS ignored{};
        system.control(service, SERVICE_CONTROL_STOP, &ignored); // fails if it is starting
        system.sleep(inMs(kPollInterval));
    }
    if (process && system.wait(process.get(), inMs(kEndLimit)) == WAIT_TIMEOUT) {
        return ServiceError{ServiceError::Kind::Other,
                            u"the service has stopped, but its process has not ended"_s};
    }
    return std::nullopt;
}

} // namespace

std::optional<ServiceError> checkInstallPermissionWith(const ServiceManagerFunctions& system) {
    const ServiceHandle manager(
        system,
        system.openManager(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (manager.get() == nullptr) {
        return lastError(u"open the service manager"_s);
    }
    return std::nullopt;
}

std::optional<ServiceError> installServiceWith(const ServiceManagerFunctions& system,
                                               const ServiceDefinition& definition) {
    const QString command = commandLineText(definition.command);
    if (auto error = checkCommand(system, command)) {
        return error;
    }
    const ServiceHandle manager(
        system,
        system.openManager(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (manager.get() == nullptr) {
        return lastError(u"open the service manager"_s);
    }
    const QString account = u"NT SERVICE\\"_s + definition.name;
    const ServiceHandle service(
        system,
        system.createService(manager.get(), wide(definition.name), wide(definition.displayName),
                             SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
                             SERVICE_ERROR_NORMAL, wide(command), nullptr, nullptr, nullptr,
                             wide(account), nullptr));
    if (service.get() == nullptr) {
        return lastError(u"create the service"_s);
    }
    std::optional<ServiceError> error = configure(system, service.get(), definition);
    if (error) {
        system.deleteService(service.get());
    }
    return error;
}

std::optional<ServiceError> updateServiceWith(const ServiceManagerFunctions& system,
                                              const ServiceDefinition& definition) {
    const QString command = commandLineText(definition.command);
    if (auto error = checkCommand(system, command)) {
        return error;
    }
    const auto change = [&](SC_HANDLE service) -> std::optional<ServiceError> {
        if (system.changeMainConfig(service, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE,
                                    SERVICE_NO_CHANGE, wide(command), nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr) == FALSE) {
            return lastError(u"change the service"_s);
        }
        return std::nullopt;
    };
    return withGatewayService(system, definition.name, SERVICE_CHANGE_CONFIG, change);
}

std::optional<ServiceError> stopServiceWith(const ServiceManagerFunctions& system,
                                            const QString& name) {
    const auto stop = [&](SC_HANDLE service) { return stopAndWait(system, service, std::nullopt); };
    return withGatewayService(system, name, SERVICE_STOP | SERVICE_QUERY_STATUS, stop);
}

std::optional<ServiceError> uninstallServiceWith(const ServiceManagerFunctions& system,
                                                 const QString& name) {
    const auto remove = [&](SC_HANDLE service) -> std::optional<ServiceError> {
        auto error = stopAndWait(system, service, kStopLimit);
        if (system.deleteService(service) == FALSE) {
            return lastError(u"remove the service"_s);
        }
        if (error) {
            error->text += u"; it is removed when it has stopped";
        }
        return error;
    };
    return withGatewayService(system, name, SERVICE_STOP | SERVICE_QUERY_STATUS | DELETE, remove);
}

bool servicesAvailable() {
    return true;
}

std::optional<ServiceError> checkInstallPermission() {
    return checkInstallPermissionWith({});
}

std::optional<ServiceError> installService(const ServiceDefinition& definition) {
    return installServiceWith({}, definition);
}

std::optional<ServiceError> updateService(const ServiceDefinition& definition) {
    return updateServiceWith({}, definition);
}

std::optional<ServiceError> stopService(const QString& name) {
    return stopServiceWith({}, name);
}

std::optional<ServiceError> uninstallService(const QString& name) {
    return uninstallServiceWith({}, name);
}

} // namespace quorin::platform

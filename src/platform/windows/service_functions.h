#pragma once

#include "platform/service.h"
#include "platform/windows/system.h"

// The Windows functions for services. Tests replace them to record their arguments and to simulate
// failures.
namespace quorin::platform {

struct ServiceManagerFunctions {
    decltype(&OpenSCManagerW) openManager = &OpenSCManagerW;
    decltype(&CreateServiceW) createService = &CreateServiceW;
    decltype(&ChangeServiceConfig2W) changeConfig = &ChangeServiceConfig2W;
    decltype(&ChangeServiceConfigW) changeMainConfig = &ChangeServiceConfigW;
    decltype(&OpenServiceW) openService = &OpenServiceW;
    decltype(&QueryServiceConfigW) queryConfig = &QueryServiceConfigW;
    decltype(&QueryServiceStatusEx) queryStatus = &QueryServiceStatusEx;
    decltype(&ControlService) control = &ControlService;
    decltype(&OpenProcess) openProcess = &OpenProcess;
    decltype(&WaitForSingleObject) wait = &WaitForSingleObject;
    decltype(&DeleteService) deleteService = &DeleteService;
    decltype(&CloseServiceHandle) close = &CloseServiceHandle;
    decltype(&ExpandEnvironmentStringsW) expandVariables = &ExpandEnvironmentStringsW;
    decltype(&Sleep) sleep = &Sleep;
};

// The functions of service.h, with the given functions of the system.
[[nodiscard]] std::optional<ServiceError>
checkInstallPermissionWith(const ServiceManagerFunctions& system);
[[nodiscard]] std::optional<ServiceError> installServiceWith(const ServiceManagerFunctions& system,
                                                             const ServiceDefinition& definition);
[[nodiscard]] std::optional<ServiceError> updateServiceWith(const ServiceManagerFunctions& system,
                                                            const ServiceDefinition& definition);
[[nodiscard]] std::optional<ServiceError> stopServiceWith(const ServiceManagerFunctions& system,
                                                          const QString& name);
[[nodiscard]] std::optional<ServiceError>
uninstallServiceWith(const ServiceManagerFunctions& system, const QString& name);

struct ServiceProcessFunctions {
    decltype(&StartServiceCtrlDispatcherW) dispatch = &StartServiceCtrlDispatcherW;
    decltype(&RegisterServiceCtrlHandlerExW) registerHandler = &RegisterServiceCtrlHandlerExW;
    decltype(&SetServiceStatus) setStatus = &SetServiceStatus;
    void(WINAPI* endProcess)(UINT) = &ExitProcess;
};

} // namespace quorin::platform

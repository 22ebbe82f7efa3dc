#include "platform/service.h"

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

ServiceError unavailable() {
    return {ServiceError::Kind::Other, u"this system has no such services"_s};
}

} // namespace

struct ServiceProcess::State {};

bool servicesAvailable() {
    return false;
}

std::optional<ServiceError> checkInstallPermission() {
    return unavailable();
}

std::optional<ServiceError> installService(const ServiceDefinition& /*definition*/) {
    return unavailable();
}

std::optional<ServiceError> updateService(const ServiceDefinition& /*definition*/) {
    return unavailable();
}

std::optional<ServiceError> stopService(const QString& /*name*/) {
    return unavailable();
}

std::optional<ServiceError> uninstallService(const QString& /*name*/) {
    return unavailable();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the implementation for Windows keeps it.
ServiceProcess::ServiceProcess(std::function<bool()> /*stop*/) {}

ServiceProcess::~ServiceProcess() = default;

std::optional<ServiceError> ServiceProcess::connect(const QString& /*name*/) {
    return unavailable();
}

void ServiceProcess::reportRunning() {}

void ServiceProcess::reportStopped(int /*exitCode*/) {}

} // namespace quorin::platform

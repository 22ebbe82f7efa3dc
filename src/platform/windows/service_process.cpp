#include "platform/service.h"

#include "platform/windows/service_connection.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::platform {

struct ServiceProcess::State {
    ServiceConnection connection;
};

ServiceProcess::ServiceProcess(std::function<bool()> stop)
    : state_(new State{ServiceConnection(std::move(stop))}) {}

ServiceProcess::~ServiceProcess() = default;

std::optional<ServiceError> ServiceProcess::connect(const QString& name) {
    const DWORD error = state_->connection.connect(name);
    if (error == ERROR_SUCCESS) {
        return std::nullopt;
    }
    return ServiceError{
        error == ERROR_FAILED_SERVICE_CONTROLLER_CONNECT ? ServiceError::Kind::StartedByHand
                                                         : ServiceError::Kind::Other,
        u"cannot connect to the service manager: "_s + qt_error_string(static_cast<int>(error))};
}

void ServiceProcess::reportRunning() {
    state_->connection.reportRunning();
}

void ServiceProcess::reportStopped(int exitCode) {
    state_->connection.reportStopped(exitCode);
}

} // namespace quorin::platform

#include "platform/windows/service_connection.h"

#include <atomic>
#include <utility>

namespace quorin::platform {

namespace {

// Wait hints for the manager, which may consider the service hung after this time. A start may
// wait 10 s for another gateway to end and 10 s for its control pipe.
constexpr DWORD kStartHintMs = 60'000;
constexpr DWORD kStopHintMs = 30'000;

// The main function of a service receives no user data.
std::atomic<ServiceConnection*> connecting = nullptr;

} // namespace

ServiceConnection::ServiceConnection(std::function<bool()> stop,
                                     const ServiceProcessFunctions& system, ServiceTiming timing)
    : stop_(std::move(stop)), system_(system), timing_(timing) {
    status_.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
}

ServiceConnection::~ServiceConnection() {
    if (stopper_.joinable()) {
        stopper_.join();
    }
    if (phase_ == Phase::Failed && dispatcher_.joinable()) {
        dispatcher_.detach(); // returns only after a report, which is not possible
    } else if (dispatcher_.joinable()) {
        dispatcher_.join();
    }
}

DWORD ServiceConnection::connect(const QString& name) {
    name_ = name.toStdWString();
    connecting = this;
    stopper_ = std::thread([this] { stopOnRequest(); });
    dispatcher_ = std::thread([this] { dispatch(); });
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return phase_ != Phase::Connecting; });
    return error_;
}

void ServiceConnection::reportRunning() {
    const std::lock_guard lock(mutex_);
    if (phase_ == Phase::Starting) {
        enter(Phase::Running);
    }
}

void ServiceConnection::reportStopped(int exitCode) {
    const std::lock_guard lock(mutex_);
    if (phase_ == Phase::Failed || phase_ == Phase::Stopped) {
        return;
    }
    status_.dwWin32ExitCode = exitCode == 0 ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
    status_.dwServiceSpecificExitCode = static_cast<DWORD>(exitCode);
    enter(Phase::Stopped);
}

// Returns when the service has stopped.
void ServiceConnection::dispatch() {
    const SERVICE_TABLE_ENTRYW table[] = {{name_.data(), &serviceMain}, {nullptr, nullptr}};
    fail(system_.dispatch(table) == FALSE ? GetLastError() : DWORD{ERROR_PROCESS_ABORTED});
}

void WINAPI ServiceConnection::serviceMain(DWORD /*argumentCount*/, wchar_t** /*arguments*/) {
    if (ServiceConnection* const self = connecting.exchange(nullptr)) {
        self->serve();
    }
}

void ServiceConnection::serve() {
    // The handler may be called at once: it waits for the mutex.
    std::unique_lock lock(mutex_);
    handle_ = system_.registerHandler(name_.c_str(), &handleControl, this);
    if (handle_ == nullptr) {
        const DWORD error = GetLastError();
        lock.unlock();
        fail(error);
        return;
    }
    enter(Phase::Starting);
    while (phase_ != Phase::Stopped) {
        if (phase_ != Phase::Stopping) {
            changed_.wait(lock);
        } else if (changed_.wait_for(lock, timing_.checkpointInterval) == std::cv_status::timeout) {
            if (phase_ == Phase::Stopping) {
                ++status_.dwCheckPoint;
                report();
            }
        }
    }
}

DWORD WINAPI ServiceConnection::handleControl(DWORD control, DWORD /*type*/, void* /*data*/,
                                              void* context) {
    auto& self = *static_cast<ServiceConnection*>(context);
    switch (control) {
    case SERVICE_CONTROL_STOP:
    case SERVICE_CONTROL_PRESHUTDOWN: {
        const std::lock_guard lock(self.mutex_);
        if (self.phase_ == Phase::Running) {
            self.enter(Phase::Stopping);
        }
        return NO_ERROR;
    }
    case SERVICE_CONTROL_INTERROGATE:
        return NO_ERROR;
    default:
        return ERROR_CALL_NOT_IMPLEMENTED;
    }
}

void ServiceConnection::stopOnRequest() {
    {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] {
            return phase_ == Phase::Stopping || phase_ == Phase::Stopped || phase_ == Phase::Failed;
        });
        if (phase_ != Phase::Stopping) {
            return;
        }
    }
    if (stop_()) {
        return;
    }
    {
        // The gateway does not accept the request if it is just ending.
        std::unique_lock lock(mutex_);
        if (changed_.wait_for(lock, timing_.endTimeout,
                              [this] { return phase_ == Phase::Stopped; })) {
            return;
        }
    }
    reportStopped(1);
    system_.endProcess(1);
}

void ServiceConnection::fail(DWORD error) {
    const std::lock_guard lock(mutex_);
    if (phase_ == Phase::Connecting) {
        error_ = error;
        phase_ = Phase::Failed;
        changed_.notify_all();
    }
}

void ServiceConnection::enter(Phase phase) {
    phase_ = phase;
    const auto set = [this](DWORD state, DWORD accepted, DWORD hint) {
        status_.dwCurrentState = state;
        status_.dwControlsAccepted = accepted;
        status_.dwWaitHint = hint;
        status_.dwCheckPoint = hint != 0 ? 1 : 0;
    };
    switch (phase) {
    case Phase::Starting:
        set(SERVICE_START_PENDING, 0, kStartHintMs);
        break;
    case Phase::Running:
        set(SERVICE_RUNNING, SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_PRESHUTDOWN, 0);
        break;
    case Phase::Stopping:
        set(SERVICE_STOP_PENDING, 0, kStopHintMs);
        break;
    default:
        set(SERVICE_STOPPED, 0, 0);
        break;
    }
    report();
    changed_.notify_all();
}

// If the report fails, there is nothing else that the service could do.
void ServiceConnection::report() {
    system_.setStatus(handle_, &status_);
}

} // namespace quorin::platform

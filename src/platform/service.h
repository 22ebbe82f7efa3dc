#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

// Services of Windows. On Linux, where systemd units replace them, the functions do nothing and
// return an error.
namespace quorin::platform {

// Returns true if this system has services.
[[nodiscard]] bool servicesAvailable();

struct ServiceDefinition {
    QString name; // letters, digits, hyphens and underscores
    QString displayName;
    QString description;
    QStringList command; // absolute path of the program, then its arguments
};

struct ServiceError {
    enum class Kind { AccessDenied, AlreadyExists, NotFound, StartedByHand, Other };
    Kind kind = Kind::Other;
    QString text; // which step failed, and the error of the system
};

// Returns an error if this account may not install services.
[[nodiscard]] std::optional<ServiceError> checkInstallPermission();

// Installs a service with these properties:
//  - It starts automatically after the other services have started.
//  - It runs in its own process with the virtual account "NT SERVICE\name".
//  - The service manager restarts it 5 s, 30 s and then each time 60 s after its process has ended
//    without reporting that it stopped. A stop with an error code does not restart it.
//  - A shutdown of the system waits up to 3 minutes until it has stopped.
// If a step fails, the service is removed again.
[[nodiscard]] std::optional<ServiceError> installService(const ServiceDefinition& definition);

// Gives an existing service the command of `definition`. Its other properties, which administrators
// may have changed, remain. Its current command must begin with the arguments "service" "run".
// NotFound: there is no service of this name.
[[nodiscard]] std::optional<ServiceError> updateService(const ServiceDefinition& definition);

// Stops the service `name`, whose command must begin with the arguments "service" "run". Waits
// without a limit until it has completed the requests in progress, and then up to 30 s until its
// process has ended, so that its files can be replaced. It does not wait for a process that this
// account may not open, or that belongs to a service that has already stopped.
[[nodiscard]] std::optional<ServiceError> stopService(const QString& name);

// Stops and removes the service `name`, whose command must begin with the arguments "service"
// "run". Waits up to 3 minutes until it has stopped, and then for its process like stopService().
// If it is still running then, returns an error; the system removes it as soon as it stops.
[[nodiscard]] std::optional<ServiceError> uninstallService(const QString& name);

// Connects a service process to the service manager and reports its state: starting (from connect()
// on), running, stopping (after a stop request), stopped. At most one per
// process.
class ServiceProcess {
public:
    // `stop` is called once, on a thread of its own, when the manager requests a stop or the system
    // shuts down. The process must then finish its work and call reportStopped(). If `stop` returns
    // false and the process does not do so within 10 s, it is ended with exit code 1.
    explicit ServiceProcess(std::function<bool()> stop);
    // Call reportStopped() before, if connect() succeeded.
    ~ServiceProcess();

    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    // Connects to the manager as the service `name`. The error is of kind StartedByHand if the
    // manager did not start this process.
    [[nodiscard]] std::optional<ServiceError> connect(const QString& name);

    // Reports that the service is running. From now on it can be stopped.
    void reportRunning();

    // Reports that the service has stopped. An `exitCode` other than 0 is reported as the service's
    // own error code. Later reports are ignored.
    void reportStopped(int exitCode);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace quorin::platform

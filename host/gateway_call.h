#pragma once

#include <QString>

#include <string>

namespace quorin {

// Is told how a call of callGateway() proceeds. The functions are called on the main thread.
class GatewayObserver {
public:
    virtual ~GatewayObserver() = default;

    // The gateway serves requests. The application object exists.
    virtual void onStarted() = 0;
    // The gateway has stopped on request.
    virtual void onStopped() = 0;
    // The start has failed. `reason` is empty if the gateway did not report one. The process ends
    // with `exitCode` after this call.
    virtual void onStartFailed(int exitCode, const QString& reason) = 0;

protected:
    GatewayObserver() = default;
    Q_DISABLE_COPY_MOVE(GatewayObserver)
};

// Loads the gateway library and runs a gateway until it is stopped. `settings` is in UTF-8. Returns
// the exit code of the process. If the start fails, the library ends the process instead. Call on
// the main thread, once in a process.
[[nodiscard]] int callGateway(std::string program, std::string settings, std::string group,
                              GatewayObserver& observer);

// Stops the gateway in this process, which completes its current requests first. Returns false if
// the gateway does not listen for commands (yet). Waits while other controllers hold the control
// pipe. Thread-safe.
[[nodiscard]] bool stopOwnGateway();

} // namespace quorin

#pragma once

#include <QString>

#include <string>
#include <vector>

namespace quorin {

// Is notified of the progress of callGateway(), on the main thread. The functions do nothing unless
// they are overridden.
class GatewayObserver {
public:
    GatewayObserver() = default;
    virtual ~GatewayObserver() = default;
    Q_DISABLE_COPY_MOVE(GatewayObserver)

    // The gateway library has been loaded and is called next. There is no application object.
    virtual void onStarting() {}
    // The gateway serves requests. The application object exists.
    virtual void onStarted() {}
    // The gateway has been told to stop and has completed its requests. It still excludes other
    // gateways.
    virtual void onStopping() {}
    // The gateway has stopped on request.
    virtual void onStopped() {}
    // The start has failed. `reason` is empty if the gateway did not report one. The process ends
    // with `exitCode` after this call.
    virtual void onStartFailed(int exitCode, const QString& reason) {
        Q_UNUSED(exitCode)
        Q_UNUSED(reason)
    }
};

struct GatewayArguments {
    std::string program;  // name of the program, for the log
    std::string settings; // settings file, in UTF-8
    std::string group;    // "primary" or "secondary"
};

// Loads the gateway library and runs a gateway until it is stopped. Notifies the observers in their
// order. Returns the exit code of the process. If the start fails, the library ends the process
// instead. Prints an error if the library cannot be loaded. Call on the main thread, once in a
// process.
[[nodiscard]] int callGateway(GatewayArguments arguments, std::vector<GatewayObserver*> observers);

// Stops the gateway in this process, which completes its current requests first. Returns false if
// the gateway does not listen for commands (yet). Waits while other controllers hold the control
// pipe. Thread-safe.
[[nodiscard]] bool stopOwnGateway();

} // namespace quorin

#pragma once

class QCoreApplication;

namespace quorin {

// How a run of the gateway ended. The caller selects the exit code from it.
enum class RunOutcome {
    Stopped,           // by the stop command, or by an exception of another kind than those below
    Failed,            // fatal error
    DuplicateInstance, // another gateway runs
};

// Runs one gateway from start-up until it is stopped. Call on the thread of `application`; it
// becomes the gateway's main thread. `argc` and `argv` are those of the exported function. Before
// it returns, it ends the watcher threads, closes the control pipe, releases the instance guard and
// shuts down the log if it was set up. Does not throw GatewayException.
[[nodiscard]] RunOutcome runGateway(QCoreApplication& application, int argc, char** argv);

} // namespace quorin

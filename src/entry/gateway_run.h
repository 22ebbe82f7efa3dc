#pragma once

class QCoreApplication;

namespace quorin {

// How a run of the gateway ended; the caller decides what becomes of the process.
enum class Outcome {
    Stopped,           // by the control channel, or by an error that is not fatal here
    Failed,            // fatal error
    DuplicateInstance, // another gateway runs
};

// Runs one gateway from start-up until it is stopped, on the calling thread, which is the
// application object's and becomes the gateway's main thread. `argc` and `argv` are those of the
// exported entry function. When it returns, all else is released: threads, pipe, instance guard,
// log.
[[nodiscard]] Outcome runGateway(QCoreApplication& application, int argc, char** argv);

} // namespace quorin

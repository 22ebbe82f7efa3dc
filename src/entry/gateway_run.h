#pragma once

namespace quorin {

// How a run of the gateway ended, for the one who decides on the process.
enum class Outcome {
    Stopped,           // as told through the control channel, or not a matter of start-up
    Failed,            // fatal error
    DuplicateInstance, // another gateway runs
};

// Runs one gateway from start-up until it is told to stop, on the calling thread, which becomes
// Qt's main thread for as long. The arguments are those of the exported entry function. When it
// returns, all is released: threads, pipe, instance guard, log.
[[nodiscard]] Outcome runGateway(int argc, char** argv);

} // namespace quorin

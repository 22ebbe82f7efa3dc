#pragma once

#include <functional>
#include <memory>

namespace quorin::platform {

// Passes requests to end the process to a function: SIGTERM and SIGINT, or Ctrl-C and Ctrl-Break on
// Windows. Closing the console, logging off and shutdown end the process on Windows as they would
// without the watch. Also ignores SIGUSR2, whose default action would end the process. The
// destructor restores the previous behaviour. Create it before any other thread is started. At most
// one per process.
class TerminationWatch {
public:
    // The first request calls `onTermination` once, on a thread of the watch. If it returns true,
    // the process is expected to end by itself. If it returns false, or when another request
    // arrives, even during the call, the process ends at once, as it would without the watch.
    explicit TerminationWatch(std::function<bool()> onTermination);
    // Waits until a call of `onTermination` has returned.
    ~TerminationWatch();

    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace quorin::platform

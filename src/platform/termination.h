#pragma once

#include <functional>
#include <memory>

namespace platform {

// While it lives, a request of the system or of a person at the console to end the process
// (SIGTERM and SIGINT; Ctrl-C, the console's closing, shutdown) is first put to a function. Make
// it before any other thread is started. One a process.
class TerminationWatch {
public:
    // `onTermination` is called on a thread of its own, once a request, never two at a time. True:
    // the process is about to end by itself. False: it ends at once, as it would without the watch.
    explicit TerminationWatch(std::function<bool()> onTermination);
    ~TerminationWatch();

    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform

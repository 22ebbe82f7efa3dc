#include "platform/termination.h"

#include <csignal>
#include <thread>
#include <utility>

#include <pthread.h>

namespace platform {

namespace {

// Ends the waiting thread; the process has no other use for this signal.
constexpr int kEndWatch = SIGUSR2;

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, kEndWatch);
    return signals;
}

// Has the signal end the process, as if nobody had watched.
void endProcessBy(int signal) {
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    std::raise(signal);
}

} // namespace

// The signals are blocked in every thread, which inherits that from the one that makes the watch,
// and taken by one thread that waits for them.
struct TerminationWatch::State {
    sigset_t before{};
    std::thread waiter;
};

TerminationWatch::TerminationWatch(std::function<bool()> onTermination)
    : state_(std::make_unique<State>()) {
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &state_->before);
    state_->waiter = std::thread([signals, onTermination = std::move(onTermination)] {
        int signal = 0;
        while (sigwait(&signals, &signal) == 0 && signal != kEndWatch) {
            if (!onTermination()) {
                endProcessBy(signal);
            }
        }
    });
}

TerminationWatch::~TerminationWatch() {
    pthread_kill(state_->waiter.native_handle(), kEndWatch);
    state_->waiter.join();
    pthread_sigmask(SIG_SETMASK, &state_->before, nullptr);
}

} // namespace platform

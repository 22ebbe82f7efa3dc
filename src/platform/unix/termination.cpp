#include "platform/termination.h"

#include <array>
#include <atomic>
#include <csignal>
#include <thread>
#include <utility>

#include <pthread.h>

namespace quorin::platform {

namespace {

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

// Ends the process by the default action of the signal.
void endProcessBy(int signal) {
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    std::signal(signal, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    std::raise(signal);
}

} // namespace

// The watched signals are blocked in every thread, since threads inherit the mask of the thread
// that creates the watch. Two threads wait for them: one may be running the function while the
// other takes the next signal.
struct TerminationWatch::State {
    std::function<bool()> onTermination;
    sigset_t maskBefore{};
    struct sigaction sigusr2Before {};
    std::atomic<bool> isRequested{false};
    std::atomic<bool> isEnding{false};
    std::array<std::thread, 2> waiters;

    void handleSignals() {
        const sigset_t signals = watchedSignals();
        int signal = 0;
        while (sigwait(&signals, &signal) == 0 && !isEnding) {
            if (isRequested.exchange(true) || !onTermination()) {
                endProcessBy(signal);
            }
        }
    }
};

TerminationWatch::TerminationWatch(std::function<bool()> onTermination)
    : state_(std::make_unique<State>()) {
    state_->onTermination = std::move(onTermination);
    const sigset_t signals = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &state_->maskBefore);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGUSR2, &ignore, &state_->sigusr2Before);
    for (std::thread& waiter : state_->waiters) {
        waiter = std::thread([state = state_.get()] { state->handleSignals(); });
    }
}

TerminationWatch::~TerminationWatch() {
    state_->isEnding = true;
    for (std::thread& waiter : state_->waiters) {
        // Wakes the thread: it has this signal blocked and waits for it. No other thread receives
        // it.
        pthread_kill(waiter.native_handle(), SIGINT);
        waiter.join();
    }
    sigaction(SIGUSR2, &state_->sigusr2Before, nullptr);
    pthread_sigmask(SIG_SETMASK, &state_->maskBefore, nullptr);
}

} // namespace quorin::platform

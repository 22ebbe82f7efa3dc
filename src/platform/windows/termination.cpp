#include "platform/termination.h"

#include "platform/windows/system.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace quorin::platform {

struct TerminationWatch::State {
    std::function<bool()> onTermination;
};

namespace {

// The system calls the handler on a new thread for each event and passes it no user data.
std::mutex watchMutex;
const std::function<bool()>* watched = nullptr;
std::atomic<bool> isRequested = false;

BOOL WINAPI handleConsoleEvent(DWORD event) {
    if (isRequested.exchange(true)) {
        return FALSE; // the default handler ends the process
    }
    {
        const std::lock_guard lock(watchMutex);
        if (watched == nullptr || !(*watched)()) {
            return FALSE;
        }
    }
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The console closes or the system shuts down: the system ends the process as soon as this
        // returns. Do not return, so that the process can end by itself within the system's time
        // limit.
        Sleep(INFINITE);
    }
    return TRUE;
}

} // namespace

TerminationWatch::TerminationWatch(std::function<bool()> onTermination)
    : state_(std::make_unique<State>(State{std::move(onTermination)})) {
    {
        const std::lock_guard lock(watchMutex);
        watched = &state_->onTermination;
    }
    isRequested = false;
    SetConsoleCtrlHandler(&handleConsoleEvent, TRUE);
}

TerminationWatch::~TerminationWatch() {
    SetConsoleCtrlHandler(&handleConsoleEvent, FALSE);
    const std::lock_guard lock(watchMutex);
    watched = nullptr;
}

} // namespace quorin::platform

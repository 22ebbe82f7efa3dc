#include "platform/termination.h"

#include "platform/windows/system.h"

#include <mutex>
#include <utility>

namespace platform {

struct TerminationWatch::State {
    std::function<bool()> onTermination;
};

namespace {

// The system calls the handler on a thread that it starts for the purpose, with no argument of
// ours.
std::mutex watchMutex;
const std::function<bool()>* watched = nullptr;

BOOL WINAPI handleConsoleEvent(DWORD event) {
    {
        const std::lock_guard lock(watchMutex);
        if (watched == nullptr || !(*watched)()) {
            return FALSE; // the system's own handler ends the process
        }
    }
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The console closes or the system shuts down, and the process would be ended as soon as
        // this returns. It is about to end in order, before the system's patience does.
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
    SetConsoleCtrlHandler(&handleConsoleEvent, TRUE);
}

TerminationWatch::~TerminationWatch() {
    SetConsoleCtrlHandler(&handleConsoleEvent, FALSE);
    const std::lock_guard lock(watchMutex);
    watched = nullptr;
}

} // namespace platform

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

// Leaves all other events, such as closing of the console, to the default handler, which ends the
// process. Windows does not report logoff and shutdown to programs that use user32.dll, as Qt does.
BOOL WINAPI handleConsoleEvent(DWORD event) {
    if ((event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) || isRequested.exchange(true)) {
        return FALSE;
    }
    const std::lock_guard lock(watchMutex);
    return watched != nullptr && (*watched)() ? TRUE : FALSE;
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

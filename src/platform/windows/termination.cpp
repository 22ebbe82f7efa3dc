#include "platform/termination.h"

#include <mutex>
#include <utility>

#include <windows.h>

namespace platform {

namespace {

// The system calls the handler on a thread of its own making and hands it nothing of ours.
std::mutex handlerMutex;
std::function<bool()> handlerFunction;

BOOL WINAPI handleConsoleEvent(DWORD event) {
    const std::lock_guard lock(handlerMutex);
    if (!handlerFunction || !handlerFunction()) {
        return FALSE;
    }
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The process is ended when this returns; the system allows it some seconds before.
        Sleep(INFINITE);
    }
    return TRUE;
}

} // namespace

struct TerminationWatch::State {};

TerminationWatch::TerminationWatch(std::function<bool()> onTermination) {
    {
        const std::lock_guard lock(handlerMutex);
        handlerFunction = std::move(onTermination);
    }
    SetConsoleCtrlHandler(handleConsoleEvent, TRUE);
}

TerminationWatch::~TerminationWatch() {
    SetConsoleCtrlHandler(handleConsoleEvent, FALSE);
    const std::lock_guard lock(handlerMutex);
    handlerFunction = nullptr;
}

} // namespace platform

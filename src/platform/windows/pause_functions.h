#pragma once

#include "platform/windows/system.h"

#include <chrono>

namespace quorin::platform {

// The Windows functions that pause() calls. Tests replace them to simulate older versions of
// Windows and failures.
struct PauseFunctions {
    decltype(&CreateWaitableTimerExW) createTimer = &CreateWaitableTimerExW;
    decltype(&SetWaitableTimer) setTimer = &SetWaitableTimer;
    decltype(&WaitForSingleObject) wait = &WaitForSingleObject;
    decltype(&Sleep) sleep = &Sleep;
};

// pause() with the given functions. Handles returned by `createTimer` are closed.
void pauseWith(const PauseFunctions& system, std::chrono::microseconds time);

} // namespace quorin::platform

#include "platform/pause.h"

#include "platform/windows/handle.h"
#include "platform/windows/pause_functions.h"

#include <ratio>
#include <utility>

namespace quorin::platform {

namespace {

using std::chrono::microseconds;

// Not declared by all versions of the system's headers. Since Windows 10, version 1803.
constexpr DWORD kHighResolution = 0x00000002; // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION

// The right to set the timer and to wait for it.
constexpr DWORD kTimerAccess = TIMER_MODIFY_STATE | SYNCHRONIZE;

// A timer without the flag is as coarse as Sleep() but takes microseconds.
Handle createTimer(const PauseFunctions& system) {
    Handle timer = ownHandle(system.createTimer(nullptr, nullptr, kHighResolution, kTimerAccess));
    return timer ? std::move(timer)
                 : ownHandle(system.createTimer(nullptr, nullptr, 0, kTimerAccess));
}

bool waitForTimer(const PauseFunctions& system, HANDLE timer, microseconds time) {
    using Ticks = std::chrono::duration<LONGLONG, std::ratio<1, 10'000'000>>;
    LARGE_INTEGER due{};
    due.QuadPart = -Ticks(time).count(); // negative: relative to now
    return system.setTimer(timer, &due, 0, nullptr, nullptr, FALSE) != FALSE &&
           system.wait(timer, INFINITE) == WAIT_OBJECT_0;
}

} // namespace

// The loop is necessary because Windows measures coarse waits from its last clock tick, so that
// they can end early.
void pauseWith(const PauseFunctions& system, microseconds time) {
    using std::chrono::steady_clock;
    if (time.count() <= 0) {
        return;
    }
    const steady_clock::time_point end = steady_clock::now() + time;
    const Handle timer = createTimer(system);
    for (microseconds left = time; left.count() > 0;
         left = std::chrono::ceil<microseconds>(end - steady_clock::now())) {
        if (!timer || !waitForTimer(system, timer.get(), left)) {
            system.sleep(
                static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
        }
    }
}

void pause(microseconds time) {
    pauseWith({}, time);
}

} // namespace quorin::platform

#include "platform/termination.h"

#include "platform/windows/handle.h"

#include <gtest/gtest.h>

#include <atomic>

namespace quorin::platform {
namespace {

constexpr DWORD kNoEvent = ~DWORD{0};
constexpr DWORD kTimeoutMs = 60'000;

// The last event that the watch has passed on.
std::atomic<DWORD> passedOn = kNoEvent;

BOOL WINAPI recordEvent(DWORD event) {
    passedOn = event;
    return TRUE;
}

// Takes the place of the default handler, which would end the process: it is called after the
// handler of the watch, because handlers are called in the reverse order of their registration.
class ConsoleEventTest : public testing::Test {
protected:
    ConsoleEventTest() {
        passedOn = kNoEvent;
        SetConsoleCtrlHandler(nullptr, FALSE); // Ctrl-C may be disabled in the parent process
        SetConsoleCtrlHandler(&recordEvent, TRUE);
    }
    ~ConsoleEventTest() override { SetConsoleCtrlHandler(&recordEvent, FALSE); }

    // Calls the handlers as the system does for `event`: on a new thread that executes a function
    // of the system.
    static void raise(DWORD event) {
        const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "CtrlRoutine")));
        ASSERT_NE(routine, nullptr);
        const Handle thread = ownHandle(CreateThread(
            nullptr, 0, routine, reinterpret_cast<void*>(ULONG_PTR{event}), 0, nullptr));
        ASSERT_NE(thread, nullptr);
        ASSERT_EQ(WaitForSingleObject(thread.get(), kTimeoutMs), WAIT_OBJECT_0)
            << "event " << event;
    }
};

TEST_F(ConsoleEventTest, CtrlCAndCtrlBreakCallFunctionOnce) {
    for (const DWORD event : {DWORD{CTRL_C_EVENT}, DWORD{CTRL_BREAK_EVENT}}) {
        std::atomic<int> calls = 0;
        const TerminationWatch watch([&] {
            ++calls;
            return true;
        });
        passedOn = kNoEvent;
        raise(event);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(passedOn, kNoEvent);
        raise(event);
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(passedOn, event);
    }
}

TEST_F(ConsoleEventTest, PassesEventOnIfFunctionReturnsFalse) {
    const TerminationWatch watch([] { return false; });
    raise(CTRL_C_EVENT);
    EXPECT_EQ(passedOn, DWORD{CTRL_C_EVENT});
}

TEST_F(ConsoleEventTest, PassesOtherEventsOn) {
    std::atomic<int> calls = 0;
    const TerminationWatch watch([&] {
        ++calls;
        return true;
    });
    for (const DWORD event :
         {DWORD{CTRL_CLOSE_EVENT}, DWORD{CTRL_LOGOFF_EVENT}, DWORD{CTRL_SHUTDOWN_EVENT}}) {
        ASSERT_NO_FATAL_FAILURE(raise(event));
        EXPECT_EQ(passedOn, event);
    }
    EXPECT_EQ(calls, 0);
}

TEST_F(ConsoleEventTest, OtherEventsAreNotRequests) {
    std::atomic<int> calls = 0;
    const TerminationWatch watch([&] {
        ++calls;
        return true;
    });
    raise(CTRL_CLOSE_EVENT);
    raise(CTRL_C_EVENT);
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace quorin::platform

#include "platform/pause.h"

#include "platform/windows/pause_functions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace quorin::platform {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Lt;
using testing::Not;

constexpr DWORD kHighResolution = 0x2;

// The calls of the functions below, which take no user data.
std::vector<DWORD> createdFlags;
std::vector<DWORD> slept;
std::vector<LONGLONG> dueTimes;

HANDLE WINAPI createTimer(LPSECURITY_ATTRIBUTES security, LPCWSTR name, DWORD flags, DWORD access) {
    createdFlags.push_back(flags);
    return CreateWaitableTimerExW(security, name, flags & ~kHighResolution, access);
}

HANDLE WINAPI createCoarseTimerOnly(LPSECURITY_ATTRIBUTES security, LPCWSTR name, DWORD flags,
                                    DWORD access) {
    createdFlags.push_back(flags);
    return flags == 0 ? CreateWaitableTimerExW(security, name, 0, access) : nullptr;
}

HANDLE WINAPI createNoTimer(LPSECURITY_ATTRIBUTES /*security*/, LPCWSTR /*name*/, DWORD flags,
                            DWORD /*access*/) {
    createdFlags.push_back(flags);
    return nullptr;
}

BOOL WINAPI setTimer(HANDLE timer, const LARGE_INTEGER* due, LONG period,
                     PTIMERAPCROUTINE completion, LPVOID argument, BOOL resume) {
    dueTimes.push_back(due->QuadPart);
    return SetWaitableTimer(timer, due, period, completion, argument, resume);
}

BOOL WINAPI failToSetTimer(HANDLE /*timer*/, const LARGE_INTEGER* /*due*/, LONG /*period*/,
                           PTIMERAPCROUTINE /*completion*/, LPVOID /*argument*/, BOOL /*resume*/) {
    return FALSE;
}

DWORD WINAPI waitForNothing(HANDLE /*handle*/, DWORD /*timeout*/) {
    return WAIT_OBJECT_0;
}

DWORD WINAPI failToWait(HANDLE /*handle*/, DWORD /*timeout*/) {
    return WAIT_FAILED;
}

void WINAPI sleepFor(DWORD milliseconds) {
    slept.push_back(milliseconds);
    Sleep(milliseconds);
}

class PauseFunctionsTest : public testing::Test {
protected:
    PauseFunctionsTest() {
        createdFlags.clear();
        slept.clear();
        dueTimes.clear();
    }

    void pauseAndExpectDuration() const {
        const auto start = std::chrono::steady_clock::now();
        pauseWith(system_, 10ms);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 10ms);
    }

    PauseFunctions system_{&createTimer, &setTimer, &WaitForSingleObject, &sleepFor};
};

TEST_F(PauseFunctionsTest, WaitsForHighResolutionTimer) {
    pauseAndExpectDuration();
    EXPECT_THAT(createdFlags, ElementsAre(kHighResolution));
    ASSERT_THAT(dueTimes, Not(IsEmpty()));
    EXPECT_EQ(dueTimes.front(), -100'000) << "in units of 100 ns, relative";
    EXPECT_THAT(slept, IsEmpty());
}

TEST_F(PauseFunctionsTest, UsesCoarseTimerOnOlderSystems) {
    system_.createTimer = &createCoarseTimerOnly;
    pauseAndExpectDuration();
    EXPECT_THAT(createdFlags, ElementsAre(kHighResolution, 0));
    EXPECT_THAT(slept, IsEmpty());
}

TEST_F(PauseFunctionsTest, SleepsIfTimerCannotBeCreated) {
    system_.createTimer = &createNoTimer;
    pauseAndExpectDuration();
    EXPECT_THAT(createdFlags, ElementsAre(kHighResolution, 0));
    ASSERT_THAT(slept, Not(IsEmpty()));
    EXPECT_EQ(slept.front(), 10);
}

TEST_F(PauseFunctionsTest, SleepsIfTimerCannotBeSet) {
    system_.setTimer = &failToSetTimer;
    pauseAndExpectDuration();
    EXPECT_THAT(slept, Not(IsEmpty()));
}

TEST_F(PauseFunctionsTest, SleepsIfWaitFails) {
    system_.wait = &failToWait;
    pauseAndExpectDuration();
    EXPECT_THAT(slept, Not(IsEmpty()));
}

TEST_F(PauseFunctionsTest, WaitsAgainIfTimerExpiresEarly) {
    system_.wait = &waitForNothing;
    pauseAndExpectDuration();
    EXPECT_GT(dueTimes.size(), 1U);
    EXPECT_THAT(dueTimes, Each(Lt(0)));
    EXPECT_GT(dueTimes.back(), dueTimes.front()) << "only the rest of the time";
}

} // namespace
} // namespace quorin::platform

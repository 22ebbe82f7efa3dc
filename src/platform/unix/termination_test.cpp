#include "platform/termination.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <future>

#include <unistd.h>

namespace quorin::platform {
namespace {

// Sends the signal to this process, in which only the threads of the watch take it.
void signalProcess(int signal) {
    kill(getpid(), signal);
}

bool isBlocked(int signal) {
    sigset_t blocked;
    sigemptyset(&blocked);
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    return sigismember(&blocked, signal) == 1;
}

// Each test runs in its own process, whose only thread creates the watch.
class TerminationTest : public testing::Test {
protected:
    TerminationTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    // Ends the process with 0 if the watch passes `signal` to its function and restores the mask.
    [[noreturn]] static void passOn(int signal) {
        std::promise<void> called;
        bool isPassedOn = false;
        {
            const TerminationWatch watch([&called] {
                called.set_value();
                return true;
            });
            signalProcess(signal);
            isPassedOn =
                called.get_future().wait_for(std::chrono::minutes(1)) == std::future_status::ready;
        }
        std::exit(isPassedOn && !isBlocked(signal) ? 0 : 1);
    }

    [[noreturn]] static void waitForEnd() {
        for (;;) {
            ::pause();
        }
    }
};

TEST_F(TerminationTest, PassesSignalsToFunction) {
    EXPECT_EXIT(passOn(SIGTERM), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(passOn(SIGINT), testing::ExitedWithCode(0), "");
}

TEST_F(TerminationTest, EndsProcessIfFunctionFails) {
    EXPECT_EXIT(
        {
            const TerminationWatch watch([] { return false; });
            signalProcess(SIGTERM);
            waitForEnd();
        },
        testing::KilledBySignal(SIGTERM), "");
}

TEST_F(TerminationTest, EndsProcessAtSecondRequest) {
    EXPECT_EXIT(
        {
            const TerminationWatch watch([] {
                signalProcess(SIGINT); // while the function runs
                waitForEnd();
                return true;
            });
            signalProcess(SIGTERM);
            waitForEnd();
        },
        testing::KilledBySignal(SIGINT), "");
}

TEST_F(TerminationTest, IgnoresSigusr2) {
    EXPECT_EXIT(
        {
            const TerminationWatch watch([] { return true; });
            std::raise(SIGUSR2);
            std::exit(3);
        },
        testing::ExitedWithCode(3), "");
}

} // namespace
} // namespace quorin::platform

#include "loaded_lumetrix.h"
#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

namespace {

class ExitTest : public testing::Test {
protected:
    ExitTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    // Starts four threads that log until the process exits. Returns once they have logged 1000
    // lines.
    static void startLoggingThreads(const LoadedLumetrix& library) {
        static std::atomic<int> lines{0};
        for (int thread = 0; thread < 4; ++thread) {
            std::thread([&library, logger = library.getLogger()] {
                for (;; ++lines) {
                    library.log(logger, "GW", 3, "line");
                }
            }).detach();
        }
        while (lines < 1000) {
            std::this_thread::yield();
        }
    }

    // Named after the test, so that the death test's child process uses the same directory.
    const LogDirectory log{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(ExitTest, ExitsWithoutReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            const auto& library = *new LoadedLumetrix; // not unloaded
            library.logOneLine(log.utf8(), "before");
            startLoggingThreads(library);
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(ExitTest, ExitsAfterReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            const auto& library = *new LoadedLumetrix;
            library.logOneLine(log.utf8(), "before");
            startLoggingThreads(library);
            library.release(library.getLogger());
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
    EXPECT_THAT(log.messages(), testing::SizeIs(testing::Ge(1000U)));
}

TEST_F(ExitTest, ExitsWithoutReleaseAfterUnload) {
    EXPECT_EXIT(
        {
            {
                const LoadedLumetrix library;
                library.logOneLine(log.utf8(), "before");
            }
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(ExitTest, ReportsStartFailureWithoutDirectory) {
    EXPECT_EXIT(
        {
            const LoadedLumetrix library;
            library.log(library.getLogger(), "GW", 5, "[End] failed to start");
            library.release(library.getLogger());
            std::exit(7);
        },
        testing::ExitedWithCode(7), "_l:error.*msg:\\[End\\] failed to start");
}

} // namespace

#include "loaded_lumetrix.h"
#include "log_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

namespace {

class Exit : public testing::Test {
protected:
    Exit() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    // Four threads that log until the process ends; returns once they have logged a good deal.
    static void keepLogging(const LoadedLumetrix& library) {
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

    // The same for the process that starts this test and the one that runs it to its end.
    const LogDirectory log{testing::UnitTest::GetInstance()->current_test_info()->name()};
};

TEST_F(Exit, WithoutReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            const auto& library = *new LoadedLumetrix; // not unloaded either
            library.logOneLine(log.utf8(), "before");
            keepLogging(library);
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
}

TEST_F(Exit, RightAfterReleaseWhileThreadsLog) {
    EXPECT_EXIT(
        {
            const auto& library = *new LoadedLumetrix;
            library.logOneLine(log.utf8(), "before");
            keepLogging(library);
            library.release(library.getLogger());
            std::exit(7);
        },
        testing::ExitedWithCode(7), "");
    EXPECT_THAT(log.messages(), testing::SizeIs(testing::Ge(1000U)));
}

TEST_F(Exit, WithoutReleaseAndUnloaded) {
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

TEST_F(Exit, StartUpFailureIsSeenThoughNoDirectoryWasGiven) {
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

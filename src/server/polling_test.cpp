#include "server/polling.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <utility>

namespace quorin {
namespace {

TEST(RetryTest, CallsOnceOnSuccess) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(retry([&] {
        ++attempts;
        return true;
    }));
    EXPECT_EQ(attempts, 1);
    EXPECT_LT(timer.elapsed(), 400);
}

TEST(RetryTest, PausesHalfSecondAfterFailure) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(retry([&] { return ++attempts == 3; }));
    EXPECT_EQ(attempts, 3);
    EXPECT_GE(timer.elapsed(), 999);
}

TEST(RetryTest, GivesUpAfterTwentyFailures) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(retry([&] {
        ++attempts;
        return false;
    }));
    EXPECT_EQ(attempts, 20);
    EXPECT_GE(timer.elapsed(), 9'990);
}

// Counts the calls for a watcher whose thread ends after some calls of Stop().
struct CountedWatcher {
    int stopsUntilEnd = 0;
    int stops = 0;
    int terminations = 0;

    [[nodiscard]] bool isRunning() const { return stops < stopsUntilEnd; }
    void Stop() { ++stops; }
    void terminate() { ++terminations; }
};

TEST(StopOrTerminateTest, DoesNothingForEndedWatchers) {
    CountedWatcher first;
    CountedWatcher second;
    stopOrTerminate(first, second);
    EXPECT_EQ(first.stops, 0);
    EXPECT_EQ(second.stops, 0);
    EXPECT_EQ(first.terminations + second.terminations, 0);
}

TEST(StopOrTerminateTest, RepeatsStopUntilAllHaveEnded) {
    for (const auto& [stopsOfFirst, stopsOfSecond] : {std::pair(2, 3), std::pair(3, 2)}) {
        CountedWatcher first{.stopsUntilEnd = stopsOfFirst};
        CountedWatcher second{.stopsUntilEnd = stopsOfSecond};
        stopOrTerminate(first, second);
        EXPECT_EQ(first.stops, 3);
        EXPECT_EQ(second.stops, 3);
        EXPECT_EQ(first.terminations + second.terminations, 0);
    }
}

TEST(StopOrTerminateTest, WaitsElevenPassesForWatcher) {
    CountedWatcher watcher{.stopsUntilEnd = 11};
    stopOrTerminate(watcher);
    EXPECT_EQ(watcher.stops, 11);
    EXPECT_EQ(watcher.terminations, 0);
}

TEST(StopOrTerminateTest, TerminatesAfterElevenPasses) {
    CountedWatcher ended;
    CountedWatcher endless{.stopsUntilEnd = 1000};
    stopOrTerminate(ended, endless);
    EXPECT_EQ(endless.stops, 11);
    EXPECT_EQ(endless.terminations, 1);
}

} // namespace
} // namespace quorin

#include "server/polling.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace quorin {
namespace {

TEST(PollingTest, whatSucceedsIsAttemptedOnce) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(attemptPatiently([&] {
        ++attempts;
        return true;
    }));
    EXPECT_EQ(attempts, 1);
    EXPECT_LT(timer.elapsed(), 400);
}

TEST(PollingTest, halfASecondLiesBehindAFailedAttempt) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(attemptPatiently([&] { return ++attempts == 3; }));
    EXPECT_EQ(attempts, 3);
    EXPECT_GE(timer.elapsed(), 999);
}

TEST(PollingTest, twentyFailuresAreEnough) {
    int attempts = 0;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(attemptPatiently([&] {
        ++attempts;
        return false;
    }));
    EXPECT_EQ(attempts, 20);
    EXPECT_GE(timer.elapsed(), 9'990);
}

} // namespace
} // namespace quorin

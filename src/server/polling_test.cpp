#include "server/polling.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

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

} // namespace
} // namespace quorin

#include "worker/timer_interval.h"

#include <gtest/gtest.h>

namespace quorin {
namespace {

using namespace std::chrono_literals;

TEST(TimerIntervalTest, ConvertsTimeUpToLongestInterval) {
    EXPECT_EQ(timerInterval(0s), 0ms);
    EXPECT_EQ(timerInterval(30s), 30'000ms);
    EXPECT_EQ(timerInterval(2'147'483s), 2'147'483'000ms);
}

TEST(TimerIntervalTest, LimitsLongerTimeToInt) {
    EXPECT_EQ(timerInterval(2'147'484s), 2'147'483'647ms);
    // Truncated to an int, these milliseconds would be 0.
    EXPECT_EQ(timerInterval(536'870'912s), 2'147'483'647ms);
    EXPECT_EQ(timerInterval(2'147'483'647s), 2'147'483'647ms);
}

} // namespace
} // namespace quorin

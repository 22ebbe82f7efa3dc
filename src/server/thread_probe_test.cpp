#include "server/thread_probe.h"

#include <gtest/gtest.h>

namespace quorin::test {
namespace {

TEST(ThreadProbeTest, TriesOnlyIfPoolMayLackThread) {
    int tries = 0;
    ThreadProbe probe([&tries] { return ++tries > 0; });
    EXPECT_TRUE(probe.canRun(1));
    EXPECT_EQ(tries, 1);
    EXPECT_TRUE(probe.canRun(2));
    EXPECT_EQ(tries, 2);
    EXPECT_TRUE(probe.canRun(2));
    EXPECT_TRUE(probe.canRun(1));
    EXPECT_EQ(tries, 2) << "the pool still has these";
}

TEST(ThreadProbeTest, TriesAgainAfterFailure) {
    bool isPossible = false;
    ThreadProbe probe([&isPossible] { return isPossible; });
    EXPECT_FALSE(probe.canRun(1));
    EXPECT_FALSE(probe.canRun(1));
    isPossible = true;
    EXPECT_TRUE(probe.canRun(1));
    isPossible = false;
    EXPECT_TRUE(probe.canRun(1));
    EXPECT_FALSE(probe.canRun(2));
}

} // namespace
} // namespace quorin::test

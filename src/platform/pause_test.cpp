#include "platform/pause.h"

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

using namespace std::chrono_literals;

TEST(PauseTest, LastsAtLeastTimeAskedFor) {
    for (const std::chrono::microseconds time : {100us, 1'000us, 10'000us, 25'300us}) {
        for (int i = 0; i < 5; ++i) {
            const auto start = std::chrono::steady_clock::now();
            pause(time);
            EXPECT_GE(std::chrono::steady_clock::now() - start, time);
        }
    }
}

TEST(PauseTest, ReturnsAtOnceIfTimeIsNotPositive) {
    pause(0us);
    pause(-1us);
}

} // namespace
} // namespace quorin::platform

#include "platform/threads.h"

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

TEST(ThreadsTest, CanStartThread) {
    EXPECT_TRUE(canStartThread());
}

} // namespace
} // namespace quorin::platform

#include "platform/threads.h"

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

TEST(ThreadsTest, thisSystemCanStartOne) {
    EXPECT_TRUE(canStartThread());
}

} // namespace
} // namespace quorin::platform

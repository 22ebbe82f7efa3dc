#include "platform/threads.h"

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(ThreadsTest, thisSystemCanStartOne) {
    EXPECT_TRUE(canStartThread());
}

} // namespace
} // namespace platform

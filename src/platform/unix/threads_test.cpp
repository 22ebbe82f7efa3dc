#include "platform/threads.h"

#include "support/no_new_threads.h"

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

TEST(ThreadFailureTest, NoticesThatNoThreadCanStart) {
    {
        const quorin::test::NoNewThreads limit;
        EXPECT_FALSE(canStartThread());
    }
    EXPECT_TRUE(canStartThread());
}

} // namespace
} // namespace quorin::platform

#include "log_directory.h"
#include "lumetrix.h"
#include "support/no_new_threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using quorin::test::NoNewThreads;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(ThreadFailureTest, ReportsThatLoggerCannotStart) {
    CaptureStderr();
    const lumetrix_logger* logger = nullptr;
    {
        const NoNewThreads limit;
        logger = lumetrix_get_logger();
    }
    EXPECT_EQ(logger, nullptr);
    EXPECT_THAT(GetCapturedStderr(), testing::MatchesRegex("lumetrix: [^\n]+\n"));
}

TEST(ThreadFailureTest, KeepsQueueThatCannotBeReplaced) {
    const LogDirectory log;
    lumetrix_logger* const logger = lumetrix_get_logger();
    ASSERT_NE(logger, nullptr);
    lumetrix_set_output_dir(logger, log.utf8().c_str(), "Gateway");
    CaptureStderr();
    {
        const NoNewThreads limit;
        lumetrix_set_pool_size(logger, 10);
    }
    EXPECT_THAT(GetCapturedStderr(), testing::MatchesRegex("lumetrix: [^\n]+\n"));
    lumetrix_log(logger, "GW", LUMETRIX_INFO, "after the failure");
    lumetrix_release(logger);
    EXPECT_THAT(log.messages(), testing::ElementsAre("after the failure"));
}

} // namespace

#include "log_directory.h"
#include "lumetrix.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <pthread.h>

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

// Gives new threads a stack that is larger than the address space.
class NoNewThreads {
public:
    NoNewThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t attributes{};
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, std::size_t{1} << 48U);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
        pthread_attr_destroy(&attributes);
    }
    ~NoNewThreads() {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoNewThreads(const NoNewThreads&) = delete;
    NoNewThreads& operator=(const NoNewThreads&) = delete;

private:
    pthread_attr_t before_{};
};

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

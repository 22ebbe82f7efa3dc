#include "log/log_capture.h"

#include "log/log.h"
#include "stub_lumetrix/recorded_log.h"

#include <gmock/gmock.h>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(LogCaptureTest, CollectsLinesInsteadOfLibrary) {
    const test::RecordedLog recorded;
    log::info(u"before"_s);
    {
        const LogCapture capture;
        EXPECT_EQ(LogCapture::active(), &capture);
        log::warn(u"\u00fcber"_s);
        log::debug([]() -> QString { return u"built"_s; });
        ASSERT_EQ(capture.lines().size(), 2u);
        EXPECT_EQ(capture.lines()[0].level, lumetrix::Level::Warn);
        EXPECT_EQ(capture.lines()[0].message, u"\u00fcber"_s);
        EXPECT_EQ(capture.lines()[1].level, lumetrix::Level::Debug);
        EXPECT_EQ(capture.lines()[1].message, u"built"_s);
    }
    EXPECT_EQ(LogCapture::active(), nullptr);
    log::info(u"after"_s);
    EXPECT_THAT(recorded.lines(), testing::ElementsAre("info: before", "info: after"));
}

// In a process of its own, which has not loaded the logging library.
TEST(LogCaptureDeathTest, CollectsBuiltLinesWithoutLibrary) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const LogCapture capture;
            log::debug([]() -> QString { return u"built"_s; });
            std::exit(capture.lines().size() == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace quorin

#include "log/log.h"

#include "stub_lumetrix/recorded_log.h"

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(LogTest, PassesMessagesWithTheirLevels) {
    const test::RecordedLog recorded;
    log::debug(u"one"_s);
    log::debug([]() -> QString { return u"two"_s; });
    log::info(u"three"_s);
    log::warn(u"\u00fcber"_s);
    log::error(u""_s);
    EXPECT_THAT(recorded.lines(), testing::ElementsAre("debug: one", "debug: two", "info: three",
                                                       "warn: \u00fcber", "error: "));
}

} // namespace
} // namespace quorin

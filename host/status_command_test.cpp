#include "status_command.h"

#include "support/print.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

TEST(StatusCommandTest, DescribesGateway) {
    check::GatewayStatus status{.processId = 4711,
                                .since = QDateTime(QDate(2026, 2, 28), QTime(23, 59, 58)),
                                .settings = u"/etc/s.xml"_s,
                                .group = u"primary"_s,
                                .port = 8443,
                                .isHttps = true};
    EXPECT_EQ(statusText({status}), u"running since 2026-02-28 23:59:58 as process 4711\n"
                                    u"settings: /etc/s.xml primary\n"
                                    u"port: 8443 (HTTPS)\n"_s);
    status.port = 0;
    status.isHttps = false;
    EXPECT_TRUE(statusText({status}).endsWith(u"port: selected by the system (HTTP)\n"_s));
}

TEST(StatusCommandTest, DescribesGatewayOfOtherProgram) {
    EXPECT_TRUE(statusText({}).startsWith(u"running; its settings are not known"_s));
}

} // namespace
} // namespace quorin

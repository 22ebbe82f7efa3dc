#include "check/running_gateway.h"

#include "support/print.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

GatewayStatus sampleStatus() {
    return {.processId = 4711,
            .since = QDateTime(QDate(2026, 2, 28), QTime(23, 59, 58), Qt::UTC),
            .settings = u"C:\\\u00fcber \"x\".xml"_s,
            .group = u"primary"_s,
            .port = 8443,
            .isHttps = true};
}

TEST(GatewayStatusTest, SurvivesConversion) {
    const GatewayStatus status = sampleStatus();
    const std::optional<GatewayStatus> read = GatewayStatus::fromJson(status.toJson());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->processId, status.processId);
    EXPECT_EQ(read->since, status.since);
    EXPECT_EQ(read->settings, status.settings);
    EXPECT_EQ(read->group, status.group);
    EXPECT_EQ(read->port, status.port);
    EXPECT_EQ(read->isHttps, status.isHttps);
}

TEST(GatewayStatusTest, RefusesOtherContent) {
    const QByteArray json = sampleStatus().toJson();
    for (const QByteArray& content : {QByteArray(), QByteArray("{}"), QByteArray("[]"),
                                      json.chopped(1), QByteArray(json).replace("8443", "\"8443\""),
                                      QByteArray(json).replace("group", "grup")}) {
        EXPECT_FALSE(GatewayStatus::fromJson(content)) << content.constData();
    }
}

} // namespace
} // namespace quorin::check

// The gateway in a host program whose qt.conf names no folder with TLS plugins.

#include "support/client.h"
#include "support/serving_test.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class TlsBackendTest : public testing::Test {
protected:
    void start(const Settings& settings) {
        site_.writeSettings(settings);
        gateway_.startProcess(QStringLiteral(QUORIN_HOST_WITHOUT_TLS),
                              {site_.settingsPath(), u"primary"_s});
    }

    Site site_;
    Gateway gateway_{site_};
};

TEST_F(TlsBackendTest, FailsStartIfHttpsLacksBackend) {
    Settings settings;
    settings.HttpsEnabled = "true";
    start(settings);
    EXPECT_EQ(gateway_.waitForExit(), 1);
    const QStringList logged = site_.logged();
    ASSERT_GE(logged.size(), 2);
    EXPECT_THAT(logged.at(logged.size() - 2).toStdString(),
                testing::StartsWith("5 [End] HTTPS is enabled, but Qt has no usable TLS backend"));
    EXPECT_THAT(logged.last().toStdString(), testing::EndsWith(": [Status] Failure"));
}

TEST_F(TlsBackendTest, ServesHttpWithoutBackend) {
    start({});
    EXPECT_EQ(exchange(site_.port(), get("/api/x")), kReply500);
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test

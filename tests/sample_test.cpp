// The sample settings and the sample data that ship with the gateway.

#include "support/client.h"
#include "support/free_port.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"

#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

QByteArray sample(const QString& name) {
    QFile file(QStringLiteral(QUORIN_SAMPLE_FOLDER) + u'/' + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    return file.readAll();
}

class SampleTest : public testing::TestWithParam<const char*> {
protected:
    // Starts a gateway with the sample settings, except for the port.
    void startGateway() {
        QByteArray settings = sample(u"settings.xml"_s);
        ASSERT_TRUE(settings.contains("<Port>8080</Port>"));
        settings.replace("<Port>8080</Port>", QByteArray("<Port>" + port_.text() + "</Port>"));
        QFile file(site_.settingsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(settings);
        file.close();
        gateway_.startWith({site_.settingsPath(), QString::fromLatin1(GetParam())});
    }

    QByteArray send(const QByteArray& request) const { return exchange(port_.number(), request); }

    const FreePort port_;
    Site site_;
    Gateway gateway_{site_};
};

TEST_P(SampleTest, ServesBothGroupsWithSampleSettings) {
    site_.writeFile(u"update.json"_s, sample(u"sample/wwwroot/update.json"_s));
    startGateway();
    EXPECT_TRUE(send(get("/update.json")).endsWith(sample(u"sample/wwwroot/update.json"_s)));
    EXPECT_THAT(send(get("/api/WebApiCommScheme")).toStdString(),
                testing::EndsWith("{\"CommunicationScheme\":\"http\"}"));
    EXPECT_THAT(send(get("/api/WebApiOrganizationId")).toStdString(),
                testing::EndsWith("{\"OrganizationId\":\"00000000-0000-0000-0000-000000000000\"}"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.record(), testing::Contains(u"set_output_level\thandle\t3"_s));
    EXPECT_THAT(site_.record(), testing::Contains(u"set_pool_size\thandle\t8192"_s));
    EXPECT_THAT(site_.record(), testing::Contains(u"set_rotation_with_date\thandle\t31"_s));
    EXPECT_THAT(site_.logged(), testing::Contains(u"3 Reply mode - Uses request queue."_s));
    EXPECT_THAT(site_.logged(),
                testing::Contains(u"3 MaxLargeFileRequest/MaxUserSession - 4/10"_s));
    EXPECT_THAT(site_.logged(), testing::Contains(u"3 Listens - Non-SSL(http) requests."_s));
}

TEST_P(SampleTest, ResetsSampleNotificationUpToDate) {
    site_.writeFile(u"notifications/workstation-1.json"_s,
                    sample(u"sample/wwwroot/notifications/workstation-1.json"_s));
    startGateway();
    EXPECT_EQ(send(resetRequestFor("/notifications/workstation-1.json", "2024-05-15T00:00:00Z")),
              kReply204);
    EXPECT_EQ(site_.readFile(u"notifications/workstation-1.json"_s),
              "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"2024-05-15T00:00:00Z\"},"
              "\"RemoteExecutionCancel\":{\"IsExist\":false,\"LastUpdated\":\"\"},"
              "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2024-06-01T17:00:00Z\"}}");
}

INSTANTIATE_TEST_SUITE_P(Groups, SampleTest, testing::Values("primary", "secondary"));

} // namespace
} // namespace quorin::test

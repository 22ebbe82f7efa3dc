// Complete runs of the gateway: log, settings, a second instance, logging libraries.

#include "support/client.h"
#include "support/deadline.h"
#include "support/free_port.h"
#include "support/lifecycle_fixture.h"

#include <QDir>
#include <QElapsedTimer>

#include <gmock/gmock.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::Not;

TEST_F(LifecycleTest, LogsRunFromSetUpToRelease) {
    startGateway();
    EXPECT_EQ(gateway_.stop(), 0);
    const QString log = u"log\thandle\tGW\t3\t"_s;
    const QString directory = site_.logFolder();
    const QString escaped = QString(directory).replace(u'\\', u"\\\\"_s); // as in the record
    EXPECT_EQ(site_.record(),
              (QStringList{
                  u"get_logger"_s,
                  u"set_rotation_with_date\thandle\t3"_s,
                  u"set_pool_size\thandle\t64"_s,
                  u"set_output_level\thandle\t2"_s,
                  u"set_output_dir\thandle\t" + escaped + u"\tQuorinGatewayHttp",
                  log + u"Quorin Gateway Http Server Start [Argument] " + arguments(),
                  log + u"Reply mode - Uses request queue.",
                  log + u"MaxLargeFileRequest/MaxUserSession - 4/10",
                  log + u"Replying communication scheme for WebAPI - https",
                  log + u"Listens - Non-SSL(http) requests.",
                  log + u"quit command recieved",
                  log + u"Quorin Gateway Http Server End [Argument] " + arguments() +
                      u" : [Status] Success",
                  u"release\thandle"_s,
              }));
    EXPECT_TRUE(QDir(directory).exists());
}

TEST_F(LifecycleTest, LogsLegacyModeWithoutLimits) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    startGateway(settings);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged(), Contains(u"3 Reply mode - Legacy (~v5.0.8)"_s));
    EXPECT_THAT(site_.logged(),
                Not(Contains(testing::ResultOf(
                    [](const QString& line) { return line.startsWith(u"3 MaxLargeFileRequest"_s); },
                    true))));
}

TEST_F(LifecycleTest, DerivesSchemeFromRootUrl) {
    struct Case {
        const char* rootUrl;
        const char* httpInFacility;
        const char* scheme;
    };
    for (const Case& testCase :
         {Case{"HTTPS://cloud", "false", "https"}, Case{"HTTPS://cloud", "true", "http"},
          Case{"http://cloud", "false", "http"}, Case{"ftp://cloud", "false", ""},
          Case{"cloud.example", "true", ""}}) {
        Settings settings;
        settings.RootUrl = testCase.rootUrl;
        settings.IsEnabledHttpInFacility = testCase.httpInFacility;
        Site site;
        Gateway gateway(site);
        test::startGateway(gateway, site, Transport::Plain, settings);
        EXPECT_EQ(gateway.stop(), 0);
        EXPECT_THAT(site.logged(), Contains(u"3 Replying communication scheme for WebAPI - " +
                                            QString::fromLatin1(testCase.scheme)))
            << testCase.rootUrl;
    }
}

TEST_F(LifecycleTest, PassesLogSettingsAsNumbers) {
    Settings settings;
    settings.LogLevel = "warn";
    settings.Generation = "0";
    settings.QueueSize = "8192";
    startGateway(settings);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.record(), Contains(u"set_output_level\thandle\t4"_s));
    EXPECT_THAT(site_.record(), Contains(u"set_rotation_with_date\thandle\t1"_s));
    EXPECT_THAT(site_.record(), Contains(u"set_pool_size\thandle\t8192"_s));
}

TEST_F(LifecycleTest, AcceptsLargestGeneration) {
    Settings settings;
    settings.Generation = "2147483647";
    startGateway(settings);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.record(), Contains(u"set_rotation_with_date\thandle\t2147483647"_s));
}

TEST_F(LifecycleTest, ReadsBackslashesInPathAsSlashes) {
    const QString path = QString(site_.settingsPath()).replace(u'/', u'\\');
    gateway_.startWith({path, u"secondary"_s});
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged(),
                Contains(u"3 Quorin Gateway Http Server Start [Argument] " + path + u" secondary"));
    EXPECT_EQ(site_.logged().last(), endLine(path + u" secondary", u"Success"_s));
}

TEST_F(LifecycleTest, ReadsSettingsOfGroup) {
    Settings settings;
    const FreePort primary;
    const FreePort secondary;
    settings.Port = primary.text();
    settings.SecondaryPort = secondary.text();
    site_.writeSettings(settings);
    for (const auto& [group, port] : {std::pair{u"primary"_s, settings.Port},
                                      std::pair{u"secondary"_s, settings.SecondaryPort}}) {
        Gateway gateway(site_);
        gateway.startWith({site_.settingsPath(), group});
        EXPECT_TRUE(waitUntil([&] { return Client(port.toUShort()).isConnected(); }))
            << group.toStdString();
        EXPECT_EQ(gateway.stop(), 0);
    }
}

TEST_F(LifecycleTest, ReducesPortModulo65536) {
    const FreePort port;
    Settings settings;
    settings.Port = QByteArray::number(65536 + port.number());
    startGateway(settings);
    EXPECT_EQ(exchange(port.number(), get("/fwfiles/none")), kReply404 + kReply500);
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(LifecycleTest, SecondInstanceRunsAfterFirstStops) {
    gateway_.start();
    EXPECT_TRUE(isListening());
    Gateway second(site_);
    second.start();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_TRUE(isListening());
    EXPECT_EQ(second.stop(), 0);
}

TEST_F(LifecycleTest, TakesOverFromKilledGatewayAtOnce) {
    QElapsedTimer timer;
    timer.start();
    gateway_.start();
    EXPECT_TRUE(isListening());
    const qint64 startTime = timer.elapsed();
    gateway_.kill();

    timer.start();
    Gateway next(site_);
    next.start();
    EXPECT_TRUE(isListening());
    // On a loaded machine a start takes some seconds, and it takes longer under Wine.
    EXPECT_LT(timer.elapsed(), startTime + 8'000)
        << "a second instance waits ten seconds for the first";
    EXPECT_EQ(next.stop(), 0);
}

class LogLibraryTest : public LifecycleTest, public testing::WithParamInterface<LogLibrary> {};

TEST_P(LogLibraryTest, ServesWithIncompleteLoggingLibrary) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    Gateway gateway(site_, GetParam());
    gateway.start();
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/a")), streamedReply("content"));
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_EQ(gateway.errorOutput(), "");
    EXPECT_EQ(site_.record().isEmpty(), GetParam() == LogLibrary::None);
}

INSTANTIATE_TEST_SUITE_P(Libraries, LogLibraryTest,
                         testing::Values(LogLibrary::None, LogLibrary::StubWithoutLog,
                                         LogLibrary::StubWithoutSetUp, LogLibrary::Stub));

} // namespace
} // namespace quorin::test

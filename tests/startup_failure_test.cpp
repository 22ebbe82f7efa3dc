// Failures before the gateway serves: arguments, settings, port, control pipe, second instance. The
// log and the exit code report each of them.

#include "support/lifecycle_fixture.h"
#include "support/pipe_obstacle.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

// Returns the line that the gateway logs for the failure `text`.
QString failureLine(const QString& text) {
    return u"5 [End] " + text;
}

const QString kPortInUse =
    failureLine(u"failed to tcp server listening:The bound address is already in use"_s);

class StartupFailureTest : public LifecycleTest {
protected:
    // Returns the record of a run that failed before it set up the log.
    static QStringList recordOfEarlyFailure(const QString& text, const QString& loggedArguments) {
        const QString log = u"log\thandle\tGW\t"_s;
        return {u"get_logger"_s, log + u"5\t[End] " + text,
                log + u"3\tQuorin Gateway Http Server End [Argument] " + loggedArguments +
                    u" : [Status] Failure",
                u"release\thandle"_s};
    }
};

TEST_F(StartupFailureTest, RefusesMissingArgument) {
    gateway_.startWith({site_.settingsPath()});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"The arguments must be three"_s, QString()));
}

TEST_F(StartupFailureTest, RefusesExtraArgument) {
    gateway_.startWith({site_.settingsPath(), u"primary"_s, u"more"_s});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"The arguments must be three"_s, arguments()));
}

TEST_F(StartupFailureTest, RefusesUnknownGroup) {
    for (const QString& group : {u"Primary"_s, u"primary "_s, u"SECONDARY"_s, u"%1"_s, u""_s}) {
        Site site;
        site.writeSettings();
        Gateway gateway(site);
        gateway.startWith({site.settingsPath(), group});
        EXPECT_EQ(gateway.waitForExit(), 1);
        EXPECT_THAT(
            site.logged(),
            ElementsAre(failureLine(u"the second argument (" + group + u") is not parsable."),
                        endLine(site.settingsPath() + u' ' + group, u"Failure"_s)));
    }
}

TEST_F(StartupFailureTest, FailsWithoutSettingsFile) {
    ASSERT_TRUE(QFile::remove(site_.settingsPath()));
    gateway_.start();
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"failed to open config file"_s, arguments()));
}

TEST_F(StartupFailureTest, SetsUpLogBeforeLaterSettings) {
    Settings settings;
    settings.HttpsEnabled = "perhaps";
    startGateway(settings);
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(site_.record(), Contains(u"set_output_level\thandle\t2"_s));
    EXPECT_THAT(site_.logged(), ElementsAre(failureLine(u"HttpsEnabled is not boolean value"_s),
                                            endLine(arguments(), u"Failure"_s)));
}

TEST_F(StartupFailureTest, RefusesNegativeQueueSizeBeforeLogSetUp) {
    Settings settings;
    settings.QueueSize = "-1";
    startGateway(settings);
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(site_.record(),
              recordOfEarlyFailure(u"QueueSize must be grater equal than 0"_s, arguments()));
}

TEST_F(StartupFailureTest, FailsIfPortIsInUse) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    gateway_.start();
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(site_.logged(), Contains(kPortInUse));
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Failure"_s));
    EXPECT_EQ(site_.record().last(), u"release\thandle"_s);
}

TEST_F(StartupFailureTest, FailsAtOnceWhileHostTaskRuns) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    gateway_.startProcess(QStringLiteral(QUORIN_BUSY_HOST), {site_.settingsPath(), u"primary"_s});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(site_.logged(), Contains(kPortInUse));
    EXPECT_EQ(site_.record().last(), u"release\thandle"_s);
}

TEST_F(StartupFailureTest, FailsIfPipeCannotBeOpened) {
    const PipeObstacle obstacle(site_);
    gateway_.start();
    EXPECT_EQ(gateway_.waitForExit(), 1);
    const QStringList logged = site_.logged();
    ASSERT_GE(logged.size(), 2);
    EXPECT_TRUE(logged.at(logged.size() - 2)
                    .startsWith(failureLine(u"failed to local socket server listening:" +
                                            obstacle.reason())))
        << logged.join(u'\n').toStdString();
    EXPECT_EQ(logged.last(), endLine(arguments(), u"Failure"_s));
}

TEST_F(StartupFailureTest, SecondInstanceFailsAfterTenSeconds) {
    gateway_.start();
    EXPECT_TRUE(isListening());

    QElapsedTimer timer;
    timer.start();
    Gateway second(site_);
    QFile::remove(site_.recordPath());
    second.start();
    EXPECT_EQ(second.waitForExit(), 2);
    EXPECT_GE(timer.elapsed(), 10'000);
    QStringList record = site_.record();
    record.removeIf([](const QString& line) { return line.contains(u"Worker::"_s); });
    EXPECT_EQ(record, (QStringList{
                          u"get_logger"_s,
                          u"log\thandle\tGW\t5\t[End] Duplicate execution of applications"_s,
                          u"release\thandle"_s,
                      }));
    EXPECT_TRUE(gateway_.isRunning());
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(StartupFailureTest, ChecksOtherInstanceBeforeArguments) {
    gateway_.start();
    EXPECT_TRUE(isListening());
    Gateway second(site_);
    second.startWith({site_.settingsPath()});
    EXPECT_EQ(second.waitForExit(), 2);
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test

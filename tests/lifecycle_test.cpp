// From the start of a run to its end: arguments, guard, log, port, control pipe, exit codes.

#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/site.h"
#include "support/system.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::Not;

// Error, prefix included, as the log shows it.
QString failure(const QString& text) {
    return u"5 [End] " + text;
}

QString endLine(const QString& arguments, const QString& status) {
    return u"3 Quorin Gateway Http Server End [Argument] " + arguments + u" : [Status] " + status;
}

class LifecycleTest : public testing::Test {
protected:
    LifecycleTest() { site_.writeSettings(); }

    QString arguments(const QString& group = u"primary"_s) const {
        return site_.settingsPath() + u' ' + group;
    }

    // The record of a run that ended in `exception` before anything was read.
    QStringList recordOfEarlyFailure(const QString& exception,
                                     const QString& shownArguments) const {
        const QString log = u"log\thandle\tGW\t"_s;
        return {u"get_logger"_s, log + u"5\t[End] " + exception,
                log + u"3\tQuorin Gateway Http Server End [Argument] " + shownArguments +
                    u" : [Status] Failure",
                u"release\thandle"_s};
    }

    Site site_;
};

TEST_F(LifecycleTest, aWholeRunIsLoggedFromSetUpToRelease) {
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.stop(), 0);
    const QString log = u"log\thandle\tGW\t3\t"_s;
    const QString directory = site_.logFolder();
    const QString escaped = QString(directory).replace(u'\\', u"\\\\"_s); // as the stub writes it
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

TEST_F(LifecycleTest, legacyModeSaysSoAndShowsNoLimits) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_THAT(site_.logged(), Contains(u"3 Reply mode - Legacy (~v5.0.8)"_s));
    EXPECT_THAT(site_.logged(),
                Not(Contains(testing::ResultOf(
                    [](const QString& line) { return line.startsWith(u"3 MaxLargeFileRequest"_s); },
                    true))));
}

TEST_F(LifecycleTest, theSchemeForTheWebApiFollowsTheRootUrl) {
    struct Case {
        const char* rootUrl;
        const char* httpInFacility;
        const char* shown;
    };
    for (const Case& testCase :
         {Case{"HTTPS://cloud", "false", "https"}, Case{"HTTPS://cloud", "true", "http"},
          Case{"http://cloud", "false", "http"}, Case{"ftp://cloud", "false", ""},
          Case{"cloud.example", "true", ""}}) {
        Settings settings;
        settings.RootUrl = testCase.rootUrl;
        settings.IsEnabledHttpInFacility = testCase.httpInFacility;
        Site site;
        site.writeSettings(settings);
        Gateway gateway(site);
        gateway.start();
        EXPECT_EQ(gateway.stop(), 0);
        EXPECT_THAT(site.logged(), Contains(u"3 Replying communication scheme for WebAPI - " +
                                            QString::fromLatin1(testCase.shown)))
            << testCase.rootUrl;
    }
}

TEST_F(LifecycleTest, logLevelsAndGenerationsReachTheLibraryAsNumbers) {
    Settings settings;
    settings.LogLevel = "warn";
    settings.Generation = "0";
    settings.QueueSize = "8192";
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_THAT(site_.record(), Contains(u"set_output_level\thandle\t4"_s));
    EXPECT_THAT(site_.record(), Contains(u"set_rotation_with_date\thandle\t1"_s));
    EXPECT_THAT(site_.record(), Contains(u"set_pool_size\thandle\t8192"_s));
}

TEST_F(LifecycleTest, theLargestGenerationDoesNotWrap) {
    Settings settings;
    settings.Generation = "2147483647";
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_THAT(site_.record(), Contains(u"set_rotation_with_date\thandle\t2147483647"_s));
}

TEST_F(LifecycleTest, backslashesInTheSettingsPathAreReadAsSlashesAndShownAsTheyAre) {
    const QString path = QString(site_.settingsPath()).replace(u'/', u'\\');
    Gateway gateway(site_);
    gateway.startWith({path, u"secondary"_s});
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_THAT(site_.logged(),
                Contains(u"3 Quorin Gateway Http Server Start [Argument] " + path + u" secondary"));
    EXPECT_EQ(site_.logged().last(), endLine(path + u" secondary", u"Success"_s));
}

TEST_F(LifecycleTest, twoArgumentsAreTooFew) {
    Gateway gateway(site_);
    gateway.startWith({site_.settingsPath()});
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"The arguments must be three"_s, QString()));
}

TEST_F(LifecycleTest, fourArgumentsAreTooManyAndTheEndLineShowsTheFirst) {
    Gateway gateway(site_);
    gateway.startWith({site_.settingsPath(), u"primary"_s, u"more"_s});
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"The arguments must be three"_s, arguments()));
}

TEST_F(LifecycleTest, theGroupIsSpelledExactly) {
    for (const QString& group : {u"Primary"_s, u"primary "_s, u"SECONDARY"_s, u"%1"_s, u""_s}) {
        Site site;
        site.writeSettings();
        Gateway gateway(site);
        gateway.startWith({site.settingsPath(), group});
        EXPECT_EQ(gateway.waitForExit(), 1);
        EXPECT_THAT(
            site.logged(),
            testing::ElementsAre(failure(u"the second argument (" + group + u") is not parsable."),
                                 endLine(site.settingsPath() + u' ' + group, u"Failure"_s)));
    }
}

TEST_F(LifecycleTest, aMissingSettingsFileEndsTheProcessWithOne) {
    QFile::remove(site_.settingsPath());
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_EQ(site_.record(), recordOfEarlyFailure(u"failed to open config file"_s, arguments()));
}

TEST_F(LifecycleTest, aFaultBehindTheLogSettingsFindsTheLogSetUp) {
    Settings settings;
    settings.HttpsEnabled = "perhaps";
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_THAT(site_.record(), Contains(u"set_output_level\thandle\t2"_s));
    EXPECT_THAT(site_.logged(),
                testing::ElementsAre(failure(u"HttpsEnabled is not boolean value"_s),
                                     endLine(arguments(), u"Failure"_s)));
}

TEST_F(LifecycleTest, aNegativeQueueSizeFailsBeforeTheLogIsSetUp) {
    Settings settings;
    settings.QueueSize = "-1";
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_EQ(site_.record(),
              recordOfEarlyFailure(u"QueueSize must be grater equal than 0"_s, arguments()));
}

TEST_F(LifecycleTest, aPortInUseEndsTheProcessWithOneAlthoughTheWatchersRun) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_THAT(site_.logged(),
                Contains(failure(u"failed to tcp server listening:The bound address is already "
                                 u"in use"_s)));
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Failure"_s));
    EXPECT_EQ(site_.record().last(), u"release\thandle"_s);
}

TEST_F(LifecycleTest, FailsAtOnceWhileHostTaskRuns) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    Gateway gateway(site_);
    gateway.startProcess(QStringLiteral(QUORIN_BUSY_HOST), {site_.settingsPath(), u"primary"_s});
    EXPECT_EQ(gateway.waitForExit(), 1);
    EXPECT_THAT(site_.logged(),
                Contains(failure(u"failed to tcp server listening:The bound address is already "
                                 u"in use"_s)));
    EXPECT_EQ(site_.record().last(), u"release\thandle"_s);
}

TEST_F(LifecycleTest, aPortAbove65535CountsModulo65536) {
    const quint16 port = freePort();
    Settings settings;
    settings.Port = QByteArray::number(65536 + port);
    site_.writeSettings(settings);
    Gateway gateway(site_);
    gateway.start();
    EXPECT_THAT(exchange(port, get("/fwfiles")).toStdString(), testing::HasSubstr(" 404 "));
    EXPECT_EQ(gateway.stop(), 0);
}

TEST_F(LifecycleTest, aPipeThatCannotBeOpenedEndsTheProcessWithOneAfterItsAttempts) {
    if (kOnWindows) {
        GTEST_SKIP() << "a pipe is no file on this system";
    }
    // A folder in the pipe's place is no stale pipe.
    ASSERT_TRUE(QDir().mkpath(site_.pipePath() + u"/full"));
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.waitForExit(), 1);
    const QStringList logged = site_.logged();
    ASSERT_GE(logged.size(), 2);
    EXPECT_TRUE(logged.at(logged.size() - 2)
                    .startsWith(failure(u"failed to local socket server listening:"_s)))
        << logged.join(u'\n').toStdString();
    EXPECT_EQ(logged.last(), endLine(arguments(), u"Failure"_s));
}

TEST_F(LifecycleTest, aSecondInstanceGivesUpAfterTenSecondsWithTwoAndNoEndLine) {
    Gateway first(site_);
    first.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());

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
    EXPECT_TRUE(first.isRunning());
    EXPECT_EQ(first.stop(), 0);
}

TEST_F(LifecycleTest, aSecondInstanceGoesOnWhenTheFirstStopsInTime) {
    Gateway first(site_);
    first.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());
    Gateway second(site_);
    second.start();
    EXPECT_EQ(first.stop(), 0);
    EXPECT_TRUE(Client(site_.port()).isConnected());
    EXPECT_EQ(second.stop(), 0);
}

TEST_F(LifecycleTest, whatAKilledGatewayLeavesBehindIsTakenOverAtOnce) {
    Gateway killed(site_);
    killed.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());
    killed.kill();

    QElapsedTimer timer;
    timer.start();
    Gateway next(site_);
    next.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());
    EXPECT_LT(timer.elapsed(), 8'000) << "the guard must not be waited for";
    EXPECT_EQ(next.stop(), 0);
}

TEST_F(LifecycleTest, aPlainFileUnderThePipesNameIsCleared) {
    if (kOnWindows) {
        GTEST_SKIP() << "a pipe is no file on this system";
    }
    QFile file(site_.pipePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    Gateway gateway(site_);
    gateway.start();
    EXPECT_EQ(gateway.stop(), 0);
}

TEST_F(LifecycleTest, thePipeIsOpenToItsOwnUserAlone) {
    if (kOnWindows) {
        GTEST_SKIP() << "a pipe is no file on this system";
    }
    Gateway gateway(site_);
    gateway.start();
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(site_.pipePath()); }));
    EXPECT_EQ(QFile::permissions(site_.pipePath()) &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
              QFile::Permissions());
    EXPECT_EQ(gateway.stop(), 0);
}

TEST_F(LifecycleTest, onlyTheExactCommandStops) {
    Gateway gateway(site_);
    gateway.start();
    for (const QByteArray& command :
         {QByteArray("Quit"), QByteArray("quit\n"), QByteArray("quit now"), QByteArray("qui"),
          QByteArray("\0quit", 5)}) {
        gateway.command(command);
    }
    // A request is answered only after the pipe's slots had their turn.
    EXPECT_THAT(exchange(site_.port(), get("/fwfiles")).toStdString(), testing::HasSubstr(" 404 "));
    EXPECT_THAT(site_.logged(), Not(Contains(u"3 quit command recieved"_s)));
    EXPECT_TRUE(gateway.isRunning());
    EXPECT_EQ(gateway.stop(), 0);
}

TEST_F(LifecycleTest, aCommandEndsAtItsFirstNul) {
    Gateway gateway(site_);
    gateway.start();
    gateway.command(QByteArray("quit\0and more", 13));
    EXPECT_EQ(gateway.waitForExit(), 0);
}

TEST_F(LifecycleTest, StopsOnQuitAfterByteOrderMark) {
    Gateway gateway(site_);
    gateway.start();
    gateway.command("\xEF\xBB\xBFquit");
    EXPECT_EQ(gateway.waitForExit(), 0);
}

TEST_F(LifecycleTest, anIdleGatewayStopsWithinAboutHalfASecond) {
    Gateway gateway(site_);
    gateway.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());
    ASSERT_TRUE(site_.waitUntilLogged(u"2 [End] void __cdecl Worker::run(void)"_s));
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_LT(timer.elapsed(), 5'000) << "about half a second, and patience for a busy machine";
}

TEST_F(LifecycleTest, afterQuitNobodyNewIsAcceptedAndTheOneServedIsServedToItsEnd) {
    site_.writeFile(u"fwfiles/large.bin"_s, QByteArray(24 * 1024 * 1024, 'x'));
    Gateway gateway(site_);
    gateway.start();
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large.bin"));
    const QByteArray begin = client.read(4096);
    gateway.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));

    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, site_.port());
    EXPECT_FALSE(late.waitForConnected(5000));
    EXPECT_TRUE(gateway.isRunning());

    client.limitReadAhead(0);
    const QByteArray reply = begin + client.readToEnd();
    EXPECT_TRUE(reply.endsWith(QByteArray(1024, 'x')));
    EXPECT_EQ(reply.size() - reply.indexOf("\r\n\r\n") - 4, 24 * 1024 * 1024);
    EXPECT_EQ(gateway.waitForExit(), 0);
}

TEST_F(LifecycleTest, aRequestThatComesAfterQuitIsIgnoredUntilTheConnectionTimesOut) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    site_.writeSettings(settings);
    site_.writeFile(u"fwfiles/a"_s, "a");
    Gateway gateway(site_);
    gateway.start();
    Client client(site_.port());
    ASSERT_TRUE(site_.waitUntilLogged(u"2 [Start] void __cdecl Worker::run(void)"_s));
    gateway.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));
    client.send(get("/fwfiles/a"));
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_EQ(gateway.waitForExit(), 0);
    QStringList logged = site_.logged();
    logged = logged.mid(logged.indexOf(u"3 quit command recieved"_s));
    EXPECT_EQ(logged, (QStringList{
                          u"3 quit command recieved"_s,
                          u"2 [Start] void __cdecl Worker::SslSocketReadyRead(void)"_s,
                          u"2 [End] void __cdecl Worker::SslSocketReadyRead(void)"_s,
                          u"5 [End] connect timeout"_s,
                          u"2 [End] void __cdecl Worker::run(void)"_s,
                          u"2 [Start] void __cdecl Worker::SslSocketDisconnected(void)"_s,
                          u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s,
                          endLine(arguments(), u"Success"_s),
                      }));
}

// The time-out is far longer than a test waits.
TEST_F(LifecycleTest, DropsQueuedConnectionsAtQuit) {
    Settings settings;
    settings.MaxUserSession = "1";
    settings.ConnectionTimeout = "300";
    site_.writeSettings(settings);
    site_.writeFile(u"fwfiles/a"_s, "a");
    Gateway gateway(site_);
    gateway.start();
    Client served(site_.port());
    const QString runStarts = u"2 [Start] void __cdecl Worker::run(void)"_s;
    ASSERT_TRUE(site_.waitUntilLogged(runStarts));
    Client silent(site_.port());
    Client asking(site_.port());
    asking.send(get("/fwfiles/a"));
    gateway.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));
    served.abort();
    EXPECT_EQ(gateway.waitForExit(), 0);
    EXPECT_EQ(silent.readToEnd(), "");
    EXPECT_EQ(asking.readToEnd(), "");
    EXPECT_EQ(site_.logged().count(runStarts), 1);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Success"_s));
}

class LogLibraryTest : public LifecycleTest, public testing::WithParamInterface<LogLibrary> {};

TEST_P(LogLibraryTest, theGatewayServesWhateverTheLoggingLibraryLacks) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    Gateway gateway(site_, GetParam());
    gateway.start();
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/a")),
              "HTTP/1.1 200\r\nContent-Length: 7\r\nContent-Type: inode/directory\r\n\r\ncontent");
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_EQ(gateway.errorOutput(), "");
    EXPECT_EQ(site_.record().isEmpty(), GetParam() == LogLibrary::None);
}

INSTANTIATE_TEST_SUITE_P(Libraries, LogLibraryTest,
                         testing::Values(LogLibrary::None, LogLibrary::StubWithoutLog,
                                         LogLibrary::StubWithoutSetUp, LogLibrary::Stub));

class ProgramTest : public LifecycleTest {
protected:
    // Exit code of quorin-gateway with these arguments.
    std::optional<int> run(const QStringList& arguments) {
        Gateway program(site_);
        program.startProgram(arguments);
        const std::optional<int> code = program.waitForExit();
        output_ = program.output();
        errors_ = program.errorOutput();
        return code;
    }

    // True for a process that the system ended as it was asked to, without a word from the gateway.
    bool wasEndedBySystem(Gateway& gateway) const {
        const std::optional<int> code = gateway.waitForExit();
        // Windows tells of Ctrl-C in the exit code; Wine says 0.
        return (!code || (kOnWindows && *code == 0)) &&
               !site_.logged().contains(endLine(arguments(), u"Success"_s));
    }

    QByteArray output_;
    QByteArray errors_;
};

TEST_F(ProgramTest, runsTheGatewayUntilStopTellsItToEnd) {
    Gateway gateway(site_);
    gateway.startProgram({u"run"_s, site_.settingsPath(), u"secondary"_s});
    EXPECT_TRUE(Client(site_.port()).isConnected());
    EXPECT_EQ(run({u"stop"_s}), 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(gateway.waitForExit(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(u"secondary"_s), u"Success"_s));
}

TEST_F(ProgramTest, readsASettingsFileOfAnyName) {
    const QString path = QFileInfo(site_.settingsPath()).path() + u"/\u00fcber \u8a2d\u5b9a.xml";
    ASSERT_TRUE(QFile::copy(site_.settingsPath(), path));
    Gateway gateway(site_);
    gateway.startProgram({u"run"_s, path, u"primary"_s});
    EXPECT_TRUE(Client(site_.port()).isConnected());
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(path + u" primary", u"Success"_s));
}

TEST_F(ProgramTest, anInterruptedGatewayFinishesWhatItServesAndStops) {
    site_.writeFile(u"fwfiles/large.bin"_s, QByteArray(16 * 1024 * 1024, 'x'));
    Gateway gateway(site_);
    gateway.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large.bin"));
    const QByteArray begin = client.read(4096);
    gateway.interrupt();
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));
    client.limitReadAhead(0);
    EXPECT_GT(begin.size() + client.readToEnd().size(), 16 * 1024 * 1024);
    EXPECT_EQ(gateway.waitForExit(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Success"_s));
}

TEST_F(ProgramTest, aGatewayInterruptedTwiceEndsAtOnce) {
    site_.writeFile(u"fwfiles/large.bin"_s, QByteArray(16 * 1024 * 1024, 'x'));
    Gateway gateway(site_);
    gateway.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large.bin"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    gateway.interrupt();
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));
    gateway.interrupt();
    EXPECT_TRUE(wasEndedBySystem(gateway));
}

TEST_F(ProgramTest, oneInterruptedWhileItWaitsForAnotherLeavesThatOneAlone) {
    Gateway first(site_);
    first.start();
    EXPECT_TRUE(Client(site_.port()).isConnected());
    Gateway second(site_);
    second.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    second.interrupt();
    EXPECT_TRUE(wasEndedBySystem(second));
    EXPECT_EQ(exchange(site_.port(), get("/api/x")), "HTTP/1.1 500 Internal Server Error\r\n\r\n");
    EXPECT_EQ(first.stop(), 0);
}

TEST_F(ProgramTest, exitsAsTheGatewayDoes) {
    QFile::remove(site_.settingsPath());
    EXPECT_EQ(run({u"run"_s, site_.settingsPath(), u"primary"_s}), 1);
}

TEST_F(ProgramTest, stopWithoutAGatewaySaysSoInOneLine) {
    EXPECT_EQ(run({u"stop"_s}), 1);
    EXPECT_EQ(errors_, "quorin-gateway: no gateway listens for commands on this machine\n");
}

TEST_F(ProgramTest, WrongUsagePrintsOneLineAndExitsWith64) {
    const QString settings = site_.settingsPath();
    for (const QStringList& arguments :
         {QStringList{}, QStringList{u"serve"_s}, QStringList{u"run"_s},
          QStringList{u"run"_s, settings}, QStringList{u"run"_s, settings, u"Primary"_s},
          QStringList{u"run"_s, settings, u"primary"_s, u"x"_s},
          QStringList{u"stop"_s, u"now"_s}}) {
        EXPECT_EQ(run(arguments), 64);
        EXPECT_EQ(errors_.count('\n'), 1) << errors_.toStdString();
        EXPECT_TRUE(errors_.startsWith("quorin-gateway: ")) << errors_.toStdString();
        EXPECT_EQ(output_, "");
    }
}

TEST_F(ProgramTest, helpAndVersionGoToStandardOutput) {
    EXPECT_EQ(run({u"--help"_s}), 0);
    EXPECT_TRUE(output_.startsWith("usage: quorin-gateway run SETTINGS primary|secondary\n"));
    EXPECT_EQ(run({u"--version"_s}), 0);
    EXPECT_EQ(output_, "quorin-gateway " QUORIN_VERSION "\n");
}

} // namespace
} // namespace quorin::test

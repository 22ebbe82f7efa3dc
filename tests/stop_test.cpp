// The control pipe, and what a gateway still serves after the command to quit.

#include "support/client.h"
#include "support/deadline.h"
#include "support/lifecycle_fixture.h"
#include "support/paused_download.h"
#include "support/system.h"

#include <QFile>
#include <QTcpSocket>

#include <gmock/gmock.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::Not;

// Longer than any test waits.
const QByteArray kEndlessTimeout = "300";

class PipeTest : public LifecycleTest {};

TEST_F(PipeTest, ReplacesStaleFile) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system has no file for a pipe";
    }
    QFile file(site_.pipePath());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    gateway_.start();
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(PipeTest, DeniesAccessToOtherUsers) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system has no file for a pipe";
    }
    gateway_.start();
    ASSERT_TRUE(waitUntil([&] { return QFile::exists(site_.pipePath()); }));
    EXPECT_EQ(QFile::permissions(site_.pipePath()) &
                  (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther),
              QFile::Permissions());
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(PipeTest, IgnoresUnknownCommands) {
    gateway_.start();
    for (const QByteArray& command :
         {QByteArray("Quit"), QByteArray("quit\n"), QByteArray("quit now"), QByteArray("qui"),
          QByteArray("\0quit", 5)}) {
        gateway_.command(command);
    }
    // By the time of this reply the gateway has read the commands.
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/none")), kReply404 + kReply500);
    EXPECT_THAT(site_.logged(), Not(Contains(kQuitLine)));
    EXPECT_TRUE(gateway_.isRunning());
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(PipeTest, EndsCommandAtFirstNul) {
    gateway_.start();
    gateway_.command(QByteArray("quit\0and more", 13));
    EXPECT_EQ(gateway_.waitForExit(), 0);
}

TEST_F(PipeTest, AcceptsQuitAfterByteOrderMark) {
    gateway_.start();
    gateway_.command("\xEF\xBB\xBFquit");
    EXPECT_EQ(gateway_.waitForExit(), 0);
}

class StopTest : public LifecycleTest {};

TEST_F(StopTest, DoesNotWaitWhenIdle) {
    Settings settings;
    settings.ConnectionTimeout = kEndlessTimeout;
    startGateway(settings);
    EXPECT_TRUE(isListening());
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds));
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(StopTest, FinishesDownloadAndRefusesConnections) {
    const QByteArray content(kLargeSize, 'x');
    site_.writeFile(u"fwfiles/large.bin"_s, content);
    gateway_.start();
    const auto client = startDownload(site_.port(), "/fwfiles/large.bin", kLargeSize);
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));

    QTcpSocket late;
    late.connectToHost(QHostAddress::LocalHost, site_.port());
    EXPECT_FALSE(late.waitForConnected(5000));
    EXPECT_TRUE(gateway_.isRunning());

    EXPECT_TRUE(client->readToEnd() == content);
    EXPECT_EQ(gateway_.waitForExit(), 0);
}

TEST_F(StopTest, IgnoresRequestAfterQuit) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway(settings);
    Client client(site_.port());
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts));
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    client.send(get("/fwfiles/a"));
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_EQ(gateway_.waitForExit(), 0);
    QStringList logged = site_.logged();
    logged = logged.mid(logged.indexOf(kQuitLine));
    EXPECT_EQ(logged, (QStringList{kQuitLine, kReadStarts, kReadEnds, u"5 [End] connect timeout"_s,
                                   kRunEnds, kDisconnectStarts, kDisconnectEnds,
                                   endLine(arguments(), u"Success"_s)}));
}

TEST_F(StopTest, DropsQueuedConnections) {
    Settings settings;
    settings.MaxUserSession = "1";
    settings.ConnectionTimeout = kEndlessTimeout;
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway(settings);
    Client served(site_.port());
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts));
    Client silent(site_.port());
    Client requesting(site_.port());
    requesting.send(get("/fwfiles/a"));
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    served.abort();
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(silent.readToEnd(), "");
    EXPECT_EQ(requesting.readToEnd(), "");
    EXPECT_EQ(site_.logged().count(kRunStarts), 1);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Success"_s));
}

} // namespace
} // namespace quorin::test

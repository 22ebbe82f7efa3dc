// Files on their way to the client: streamed, or whole under a lock.

#include "support/client.h"
#include "support/deadline.h"
#include "support/serving_test.h"
#include "support/store.h"
#include "support/system.h"

#include <QFile>
#include <QLocalServer>
#include <QLockFile>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class DownloadTest : public ServingTest {
protected:
    // Header and body of a streamed file.
    static QByteArray streamed(const QByteArray& content) {
        return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(content.size()) +
               "\r\nContent-Type: inode/directory\r\n\r\n" + content;
    }
};

INSTANTIATE_TEST_SUITE_P(Transports, DownloadTest, testing::ValuesIn(transports()),
                         TransportName());

QByteArray patternOf(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = char((i * 31 + (i >> 8)) & 0xff);
    }
    return bytes;
}

TEST_P(DownloadTest, aFileIsStreamedBehindABareHeader) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip content");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/a.zip")), streamed("zip content"));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : a.zip"_s, u"2 GET fwfiles/a.zip - -  200 0"_s}));
}

TEST_P(DownloadTest, everyFolderBelowTheRootIsServed) {
    site_.writeFile(u"patterns/p.xml"_s, "<p/>");
    site_.writeFile(u"plugins/deep/er/d.bin"_s, QByteArray("\0\1\2", 3));
    site_.writeFile(u"top.txt"_s, "top");
    startGateway();
    EXPECT_EQ(ask(get("/patterns/p.xml")), streamed("<p/>"));
    EXPECT_EQ(ask(get("/plugins/deep/er/d.bin")), streamed(QByteArray("\0\1\2", 3)));
    EXPECT_EQ(ask(get("/top.txt")), streamed("top"));
    EXPECT_EQ(ask("get //patterns//p.xml http/1.0\r\nHost: x\r\n\r\n"), streamed("<p/>"));
}

TEST_P(DownloadTest, anEmptyFileHasAHeaderAndNoBody) {
    site_.writeFile(u"fwfiles/empty"_s, "");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/empty")), streamed(""));
}

TEST_P(DownloadTest, theFileArrivesWholeWhateverTheChunk) {
    const QByteArray content = patternOf(1'000'003);
    for (const char* const chunk : {"0", "1000", "65536", "1000003", "1000004", "2147483647"}) {
        Site site;
        site.writeFile(u"fwfiles/pattern"_s, content);
        Settings settings;
        settings.ThreadReadBufferSize = chunk;
        if (GetParam() == Transport::Tls) {
            settings.HttpsEnabled = "true";
            installCertificate(site, settings.GatewayAddress);
        }
        site.writeSettings(settings);
        Gateway gateway(site);
        gateway.start();
        EXPECT_TRUE(exchange(site.port(), get("/fwfiles/pattern"), GetParam()) == streamed(content))
            << chunk;
        EXPECT_EQ(gateway.stop(), 0);
    }
}

TEST_P(DownloadTest, aTransferThatMayTakeNoTimeExpiresAtItsFirstChunk) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(ask(get("/fwfiles/a")), "HTTP/1.1 200\r\nContent-Length: 7\r\n"
                                      "Content-Type: inode/directory\r\n\r\n");
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : a"_s, u"5 [End] requet expired"_s}));
}

TEST_P(DownloadTest, aPeerThatLeavesInMidStreamEndsTheTransfer) {
    site_.writeFile(u"fwfiles/large"_s, QByteArray(32 * 1024 * 1024, 'x'));
    startGateway();
    Client client(site_.port(), GetParam());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    client.abort();
    ASSERT_TRUE(site_.waitUntilLogged(u"2 [End] void __cdecl Worker::run(void)"_s));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : large"_s, u"5 [End] socket disconnected"_s}));
}

TEST_P(DownloadTest, aFileThatCannotBeOpenedGets500Twice) {
    if (kOnWindows) {
        GTEST_SKIP() << "no file of this system exists and opens to nobody";
    }
    // A local socket exists, is no folder, and cannot be opened by anybody, whatever his rights.
    const QString path = site_.rootPath(u"fwfiles/socket"_s);
    QLocalServer socket;
    ASSERT_TRUE(socket.listen(path)) << socket.errorString().toStdString();
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/socket")), kReply500 + kReply500);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : socket"_s,
                           u"5 [End] failed to open " + path + u" for read."}));
}

TEST_P(DownloadTest, aReaderThatPausesBeforeTheEndStillGetsEveryByte) {
    const QByteArray content = patternOf(4 * 1024 * 1024);
    site_.writeFile(u"fwfiles/pattern"_s, content);
    startGateway();
    Client client(site_.port(), GetParam());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/pattern"));
    const QByteArray expected = streamed(content);
    QByteArray received = client.read(expected.size() - 10);
    QThread::sleep(5); // what is tested: five seconds of silence
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == expected) << received.size();
}

TEST_P(DownloadTest, aReaderThatStallsForLongerThanAChunkMayTakeCatchesUpWhileChunksAreLeft) {
    const QByteArray content = patternOf(64 * 1024 * 1024); // the system alone holds some MiB
    site_.writeFile(u"fwfiles/pattern"_s, content);
    Settings settings;
    settings.ThreadReadBufferSize = "4194304";
    startGateway(settings);
    Client client(site_.port(), GetParam());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/pattern"));
    const QByteArray expected = streamed(content);
    QByteArray received = client.read(4096);
    QThread::sleep(32); // what is tested: more than the 30 seconds of a chunk
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == expected) << received.size();
}

TEST_P(DownloadTest, whatTheClientSendsMeanwhileTakesNothingFromItsReply) {
    const QByteArray content = patternOf(8 * 1024 * 1024);
    site_.writeFile(u"fwfiles/pattern"_s, content);
    startGateway();
    Client client(site_.port(), GetParam());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/pattern"));
    QByteArray received = client.read(4096);
    client.send(QByteArray(200'000, 'g')); // less than the system holds
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == streamed(content)) << received.size();
}

// The content type of a notification file is the file's own.
QByteArray wholeReply(const QByteArray& content, const QByteArray& type) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(content.size()) +
           "\r\nContent-Type: " + type + "\r\n\r\n" + content;
}

TEST_P(DownloadTest, aNotificationIsSentWholeUnderItsLock) {
    site_.writeFile(u"notifications/n.json"_s, "{\"a\":1}");
    startGateway();
    EXPECT_EQ(ask(get("/notifications/n.json")), wholeReply("{\"a\":1}", "application/json"));
    const QString path = site_.rootPath(u"notifications/n.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : n.json"_s, u"2 notification file " + path,
                           u"2 Close file. (" + path + u')',
                           u"2 GET notifications/n.json - -  200 0"_s}));
    EXPECT_FALSE(QFile::exists(site_.stagingPath(u"n.json.lock"_s)));
}

TEST_P(DownloadTest, anyFolderOfThatNameHoldsNotificationsInItsExactSpelling) {
    site_.writeFile(u"fwfiles/notifications/n.txt"_s, "deep");
    site_.writeFile(u"Notifications/n.txt"_s, "capital");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/notifications/n.txt")), wholeReply("deep", "text/plain"));
    EXPECT_EQ(ask(get("/Notifications/n.txt")), streamed("capital"));
}

TEST_P(DownloadTest, anEmptyNotificationIsSent) {
    site_.writeFile(u"notifications/n.json"_s, "");
    startGateway();
    EXPECT_EQ(ask(get("/notifications/n.json")), wholeReply("", "application/json"));
}

TEST_P(DownloadTest, aLockHeldElsewhereIsWaitedForFiveTimes) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    QLockFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.tryLock());
    startGateway();
    EXPECT_EQ(ask(get("/notifications/n.json")), kReply500 + kReply500);
    const QString path = site_.rootPath(u"notifications/n.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : n.json"_s, u"2 notification file " + path,
                           u"2 Failed to Lock (1/5)"_s, u"2 Failed to Lock (2/5)"_s,
                           u"2 Failed to Lock (3/5)"_s, u"2 Failed to Lock (4/5)"_s,
                           u"2 Failed to Lock (5/5)"_s,
                           u"5 Failed to Lock for \"" + site_.stagingPath(u"n.json"_s) + u'"',
                           u"5 [End] failed to open " + path + u" for read (lock failed)."}));
    EXPECT_TRUE(QFile::exists(site_.stagingPath(u"n.json.lock"_s))) << "the holder keeps its lock";
}

TEST_P(DownloadTest, aLockReleasedMeanwhileIsTaken) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    QLockFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.tryLock());
    startGateway();
    Client client(site_.port(), GetParam());
    client.send(get("/notifications/n.json"));
    ASSERT_TRUE(site_.waitUntilLogged(u"2 Failed to Lock (2/5)"_s));
    lock.unlock();
    EXPECT_EQ(client.readToEnd(), wholeReply("{}", "application/json"));
}

TEST_P(DownloadTest, withoutTheStagingFolderTheLockFails) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    ASSERT_TRUE(QDir(site_.stagingPath(QString())).removeRecursively());
    startGateway();
    EXPECT_EQ(ask(get("/notifications/n.json")), kReply500 + kReply500);
    EXPECT_THAT(stopAndReadHandlerLog(), testing::Contains(u"5 Failed to Lock for \"" +
                                                           site_.stagingPath(u"n.json"_s) + u'"'));
}

TEST_P(DownloadTest, anExpiredNotificationGets500Once) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(ask(get("/notifications/n.json")), kReply500);
    EXPECT_THAT(stopAndReadHandlerLog(), testing::Contains(u"5 [End] request expired"_s));
}

TEST_P(DownloadTest, theManifestOfTheAddressAskedIsChosen) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.2.json"_s, "of 127.0.0.2");
    startGateway();
    EXPECT_EQ(ask(get("/update.json")), streamed("general"));
    Client client(site_.port(), GetParam(), QHostAddress(u"127.0.0.2"_s));
    client.send(get("/update.json"));
    EXPECT_EQ(client.readToEnd(), streamed("of 127.0.0.2"));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{
                  u"2 Received requesting update.json from "_s,
                  u"2 Response update.json : update.json"_s, u"2 Target file : update.json"_s,
                  u"2 GET update.json - -  200 0"_s, u"2 Received requesting update.json from "_s,
                  u"2 Response update.json : update_127.0.0.2.json"_s,
                  u"2 Target file : update_127.0.0.2.json"_s, u"2 GET update.json - -  200 0"_s}));
}

TEST_P(DownloadTest, aManifestMayExistForItsAddressAloneAndInAnyFolder) {
    site_.writeFile(u"fwfiles/update_127.0.0.1.json"_s, "variant");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/update.json")), streamed("variant"));
    EXPECT_EQ(ask(get("/patterns/update.json")),
              "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n" + kReply500);
}

} // namespace
} // namespace quorin::test

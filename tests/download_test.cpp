// Downloads: files that are streamed, and notifications that are sent whole under a lock.

#include "support/client.h"
#include "support/deadline.h"
#include "support/file_names.h"
#include "support/paused_download.h"
#include "support/serving_test.h"
#include "support/unreadable_file.h"

#include <QFile>
#include <QLockFile>
#include <QThread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class DownloadTest : public ServingTest {
protected:
    // Requests `target` on a connection that buffers only 4 KiB ahead of the reader.
    static void requestWithSmallBuffer(Client& client, const QByteArray& target) {
        client.limitReadAhead(kReadAhead);
        client.send(get(target));
    }

    static constexpr qint64 kReadAhead = 4096;
};

INSTANTIATE_TEST_SUITE_P(Transports, DownloadTest, testing::ValuesIn(kTransports), TransportName());

QByteArray patternOf(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = char((i * 31 + (i >> 8)) & 0xff);
    }
    return bytes;
}

TEST_P(DownloadTest, StreamsFileAfterMinimalHeader) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip content");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/a.zip")), streamedReply("zip content"));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : a.zip"_s, u"2 GET fwfiles/a.zip - -  200 0"_s}));
}

TEST_P(DownloadTest, ServesFilesOfEveryFolder) {
    site_.writeFile(u"patterns/p.xml"_s, "<p/>");
    site_.writeFile(u"plugins/deep/er/d.bin"_s, QByteArray("\0\1\2", 3));
    site_.writeFile(u"top.txt"_s, "top");
    startGateway();
    EXPECT_EQ(request(get("/patterns/p.xml")), streamedReply("<p/>"));
    EXPECT_EQ(request(get("/plugins/deep/er/d.bin")), streamedReply(QByteArray("\0\1\2", 3)));
    EXPECT_EQ(request(get("/top.txt")), streamedReply("top"));
    EXPECT_EQ(request("get //patterns//p.xml http/1.0\r\nHost: x\r\n\r\n"), streamedReply("<p/>"));
}

TEST_P(DownloadTest, SendsHeaderOnlyForEmptyFile) {
    site_.writeFile(u"fwfiles/empty"_s, "");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/empty")), streamedReply(""));
}

TEST_P(DownloadTest, StreamsWholeFileForAnyChunkSize) {
    const QByteArray content = patternOf(1'000'003);
    for (const char* const chunk : {"0", "1000", "65536", "1000003", "1000004", "2147483647"}) {
        Site site;
        site.writeFile(u"fwfiles/pattern"_s, content);
        Settings settings;
        settings.ThreadReadBufferSize = chunk;
        Gateway gateway(site);
        test::startGateway(gateway, site, GetParam(), settings);
        EXPECT_TRUE(exchange(site.port(), get("/fwfiles/pattern"), GetParam()) ==
                    streamedReply(content))
            << chunk;
        EXPECT_EQ(gateway.stop(), 0);
    }
}

TEST_P(DownloadTest, ExpiresAtFirstChunkIfTimeoutIsZero) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(request(get("/fwfiles/a")), streamHeader(7));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : a"_s, u"5 [End] requet expired"_s}));
}

TEST_P(DownloadTest, EndsTransferWhenClientDisconnects) {
    site_.writeFile(u"fwfiles/large"_s, QByteArray(32 * 1024 * 1024, 'x'));
    startGateway();
    Client client(site_.port(), GetParam());
    requestWithSmallBuffer(client, "/fwfiles/large");
    EXPECT_EQ(client.read(kReadAhead).size(), kReadAhead);
    client.abort();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : large"_s, u"5 [End] socket disconnected"_s}));
}

TEST_P(DownloadTest, Sends500TwiceIfFileCannotBeOpened) {
    const QString path = site_.rootPath(u"fwfiles/unreadable"_s);
    const UnreadableFile file(path);
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/unreadable")), kReply500 + kReply500);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : unreadable"_s,
                           u"5 [End] failed to open " + path + u" for read."}));
}

TEST_P(DownloadTest, DeliversAllBytesAfterPauseBeforeEnd) {
    const QByteArray content = patternOf(4 * 1024 * 1024);
    site_.writeFile(u"fwfiles/pattern"_s, content);
    startGateway();
    Client client(site_.port(), GetParam());
    requestWithSmallBuffer(client, "/fwfiles/pattern");
    const QByteArray expected = streamedReply(content);
    QByteArray received = client.read(expected.size() - 10);
    QThread::sleep(5); // the pause is the subject of the test
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == expected) << received.size();
}

TEST_P(DownloadTest, DeliversAllBytesAfterStallBeyondChunkTimeout) {
    const QByteArray content = patternOf(64 * 1024 * 1024); // the system buffers some MiB
    site_.writeFile(u"fwfiles/pattern"_s, content);
    Settings settings;
    settings.ThreadReadBufferSize = "4194304";
    startGateway(settings);
    Client client(site_.port(), GetParam());
    requestWithSmallBuffer(client, "/fwfiles/pattern");
    const QByteArray expected = streamedReply(content);
    QByteArray received = client.read(kReadAhead);
    QThread::sleep(32); // longer than the 30 s in which a chunk has to be sent
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == expected) << received.size();
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_P(DownloadTest, KeepsReplyIntactIfClientSendsMore) {
    const QByteArray content = patternOf(8 * 1024 * 1024);
    site_.writeFile(u"fwfiles/pattern"_s, content);
    startGateway();
    Client client(site_.port(), GetParam());
    requestWithSmallBuffer(client, "/fwfiles/pattern");
    QByteArray received = client.read(kReadAhead);
    client.send(QByteArray(200'000, 'g')); // less than the system buffers
    client.limitReadAhead(0);
    received += client.readToEnd();
    EXPECT_TRUE(received == streamedReply(content)) << received.size();
}

// What publishers do with a file while a client downloads it.
class ChangeDuringDownloadTest : public DownloadTest {
protected:
    ChangeDuringDownloadTest() {
        site_.writeFile(kFile, old_);
        startGateway();
        client_.emplace(site_.port(), GetParam());
        requestWithSmallBuffer(*client_, kTarget);
        received_ = client_->read(kReadAhead);
    }

    QString path() const { return site_.rootPath(kFile); }

    // Downloads the rest and expects the old content.
    void expectOldContent() {
        client_->limitReadAhead(0);
        received_ += client_->readToEnd();
        EXPECT_TRUE(received_ == streamedReply(old_)) << received_.size();
    }

    static const QString kFile;
    static const QByteArray kTarget;

    const QByteArray old_ = patternOf(kLargeSize);
    std::optional<Client> client_;
    QByteArray received_;
};

const QString ChangeDuringDownloadTest::kFile = u"fwfiles/pattern"_s;
const QByteArray ChangeDuringDownloadTest::kTarget = "/fwfiles/pattern";

INSTANTIATE_TEST_SUITE_P(Transports, ChangeDuringDownloadTest, testing::ValuesIn(kTransports),
                         TransportName());

TEST_P(ChangeDuringDownloadTest, DeliversOldContentOfReplacedFile) {
    site_.writeFile(u"fwfiles/new"_s, "new");
    ASSERT_TRUE(publish(site_.rootPath(u"fwfiles/new"_s), path()));
    EXPECT_EQ(request(get(kTarget)), streamedReply("new"));
    expectOldContent();
}

TEST_P(ChangeDuringDownloadTest, DeliversOldContentOfRenamedFile) {
    ASSERT_TRUE(QFile::rename(path(), site_.rootPath(u"fwfiles/old"_s)));
    site_.writeFile(kFile, "new");
    EXPECT_EQ(request(get(kTarget)), streamedReply("new"));
    expectOldContent();
}

TEST_P(ChangeDuringDownloadTest, DeliversOldContentOfDeletedFile) {
    ASSERT_TRUE(QFile::remove(path()));
    expectOldContent();
    // On Windows the name can exist until the gateway has closed the file.
    ASSERT_TRUE(waitUntil([this] { return !QFile::exists(path()); }));
    EXPECT_EQ(request(get(kTarget)), kReply404 + kReply500);
}

TEST_P(DownloadTest, SendsNotificationUnderLock) {
    site_.writeFile(u"notifications/n.json"_s, "{\"a\":1}");
    startGateway();
    EXPECT_EQ(request(get("/notifications/n.json")), wholeReply("{\"a\":1}"));
    const QString path = site_.rootPath(u"notifications/n.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : n.json"_s, u"2 notification file " + path,
                           u"2 Close file. (" + path + u')',
                           u"2 GET notifications/n.json - -  200 0"_s}));
    EXPECT_FALSE(QFile::exists(site_.stagingPath(u"n.json.lock"_s)));
}

TEST_P(DownloadTest, MatchesNotificationsFolderCaseSensitively) {
    site_.writeFile(u"fwfiles/notifications/n.txt"_s, "deep");
    site_.writeFile(u"Notifications/n.txt"_s, "capital");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/notifications/n.txt")), wholeReply("deep", "text/plain"));
    EXPECT_EQ(request(get("/Notifications/n.txt")), streamedReply("capital"));
}

TEST_P(DownloadTest, SendsEmptyNotification) {
    site_.writeFile(u"notifications/n.json"_s, "");
    startGateway();
    EXPECT_EQ(request(get("/notifications/n.json")), wholeReply(""));
}

TEST_P(DownloadTest, RetriesLockFiveTimes) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    QLockFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.tryLock());
    startGateway();
    EXPECT_EQ(request(get("/notifications/n.json")), kReply500 + kReply500);
    const QString path = site_.rootPath(u"notifications/n.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Target file : n.json"_s, u"2 notification file " + path,
                           u"2 Failed to Lock (1/5)"_s, u"2 Failed to Lock (2/5)"_s,
                           u"2 Failed to Lock (3/5)"_s, u"2 Failed to Lock (4/5)"_s,
                           u"2 Failed to Lock (5/5)"_s,
                           u"5 Failed to Lock for \"" + site_.stagingPath(u"n.json"_s) + u'"',
                           u"5 [End] failed to open " + path + u" for read (lock failed)."}));
    EXPECT_TRUE(QFile::exists(site_.stagingPath(u"n.json.lock"_s)))
        << "the holder must keep its lock";
}

TEST_P(DownloadTest, TakesLockReleasedDuringRetries) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    QLockFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.tryLock());
    startGateway();
    Client client(site_.port(), GetParam());
    client.send(get("/notifications/n.json"));
    ASSERT_TRUE(site_.waitUntilLogged(u"2 Failed to Lock (2/5)"_s));
    lock.unlock();
    EXPECT_EQ(client.readToEnd(), wholeReply("{}"));
}

TEST_P(DownloadTest, FailsLockWithoutStagingFolder) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    ASSERT_TRUE(QDir(site_.stagingPath(QString())).removeRecursively());
    startGateway();
    EXPECT_EQ(request(get("/notifications/n.json")), kReply500 + kReply500);
    EXPECT_THAT(stopAndReadHandlerLog(), testing::Contains(u"5 Failed to Lock for \"" +
                                                           site_.stagingPath(u"n.json"_s) + u'"'));
}

TEST_P(DownloadTest, Sends500OnceForExpiredNotification) {
    site_.writeFile(u"notifications/n.json"_s, "{}");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(request(get("/notifications/n.json")), kReply500);
    EXPECT_THAT(stopAndReadHandlerLog(), testing::Contains(u"5 [End] request expired"_s));
}

TEST_P(DownloadTest, SelectsManifestOfLocalAddress) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.2.json"_s, "of 127.0.0.2");
    startGateway();
    EXPECT_EQ(request(get("/update.json")), streamedReply("general"));
    Client client(site_.port(), GetParam(), QHostAddress(u"127.0.0.2"_s));
    client.send(get("/update.json"));
    EXPECT_EQ(client.readToEnd(), streamedReply("of 127.0.0.2"));
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{
                  u"2 Received requesting update.json from "_s,
                  u"2 Response update.json : update.json"_s, u"2 Target file : update.json"_s,
                  u"2 GET update.json - -  200 0"_s, u"2 Received requesting update.json from "_s,
                  u"2 Response update.json : update_127.0.0.2.json"_s,
                  u"2 Target file : update_127.0.0.2.json"_s, u"2 GET update.json - -  200 0"_s}));
}

TEST_P(DownloadTest, ServesManifestVariantWithoutGeneralOne) {
    site_.writeFile(u"fwfiles/update_127.0.0.1.json"_s, "variant");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/update.json")), streamedReply("variant"));
    EXPECT_EQ(request(get("/patterns/update.json")), kReply404 + kReply500);
}

// Names that reach a file on Windows although it has another name. They must not bypass the lock of
// a notification or the limit of large files.
class FileAliasTest : public ServingTest {
protected:
    FileAliasTest() {
        site_.writeFile(u"fwfiles/a.zip"_s, "zip content");
        site_.writeFile(u"notifications/n.json"_s, kNotification);
    }

    // Expects that GET and DELETE treat the targets as missing files.
    void expectMissing(const QByteArrayList& targets) {
        startGateway();
        QStringList lines;
        for (const QByteArray& target : targets) {
            EXPECT_EQ(request(get(target)), kReply404 + kReply500) << target.toStdString();
            EXPECT_EQ(request(resetRequestFor(target, "2024-06-01")), kReply404 + kReply500)
                << target.toStdString();
            const QString line = u"5 [End] " + underDocumentRoot(QString::fromUtf8(target)) +
                                 u" does not exist or directory";
            lines << line << line;
        }
        EXPECT_EQ(site_.readFile(u"fwfiles/a.zip"_s), "zip content");
        EXPECT_EQ(site_.readFile(u"notifications/n.json"_s), kNotification);
        EXPECT_EQ(stopAndReadHandlerLog(), lines);
    }

    static const QByteArray kNotification;
};

const QByteArray FileAliasTest::kNotification = "{\"a\":1}";

INSTANTIATE_TEST_SUITE_P(Transports, FileAliasTest, testing::ValuesIn(kTransports),
                         TransportName());

TEST_P(FileAliasTest, RefusesNamesThatEndInDot) {
    expectMissing({"/fwfiles/a.zip.", "/fwfiles/a.zip...", "/fwfiles./a.zip", "/fwfiles/a.zip/.",
                   "/fwfiles/a.zip/x/..", "//fwfiles.//a.zip", "/notifications./n.json",
                   "/notifications/n.json.", "/notifications/n.json/."});
}

TEST_P(FileAliasTest, RefusesTrailingSlash) {
    expectMissing({"/fwfiles/a.zip/", "/fwfiles/a.zip//", "/notifications/n.json/"});
}

TEST_P(FileAliasTest, RefusesNamesOfDevices) {
    expectMissing({"/NUL", "/fwfiles/NUL", "/fwfiles/nul", "/fwfiles/NUL.zip", "/fwfiles/CON",
                   "/fwfiles/CON.json", "/fwfiles/AUX", "/fwfiles/PRN", "/fwfiles/COM1",
                   "/fwfiles/LPT1.txt", "/notifications/NUL", "/NUL/a.zip"});
}

TEST_P(FileAliasTest, RefusesShortNames) {
    site_.writeFile(u"fwfiles/a long name.zip"_s, "long");
    const QByteArray folder = shortName(site_.rootPath(u"notifications"_s)).toUtf8();
    const QByteArray file = shortName(site_.rootPath(u"fwfiles/a long name.zip"_s)).toUtf8();
    if (folder.isEmpty() || file.isEmpty()) {
        GTEST_SKIP() << "this system or volume has no short names";
    }
    ASSERT_TRUE(QFile::exists(site_.rootPath(QString::fromUtf8(folder + "/n.json"))));
    ASSERT_TRUE(QFile::exists(site_.rootPath(QString::fromUtf8("fwfiles/" + file))));
    expectMissing({"/" + folder + "/n.json", "/fwfiles/" + file, "/" + folder.toLower() + "/n.json",
                   "//" + folder + "//n.json"});
}

// These characters are percent-encoded, so that they have no special meaning.
TEST_P(FileAliasTest, EncodesCharactersOfStreamsAndWildcards) {
    startGateway();
    for (const char* const target :
         {"/fwfiles/a.zip::$DATA", "/fwfiles/a.zip:$DATA",
          "/notifications::$INDEX_ALLOCATION/n.json", "/fwfiles/a.zip%20", "/fwfiles\\a.zip",
          "/fwfiles/a.zi?", "/fwfiles/*"}) {
        EXPECT_EQ(request(get(target)), kReply404 + kReply500) << target;
    }
}

TEST_P(FileAliasTest, RefusesAliasOfManifestFolder) {
    site_.writeFile(u"fwfiles/update_127.0.0.1.json"_s, "variant");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/update.json")), streamedReply("variant"));
    EXPECT_EQ(request(get("/fwfiles./update.json")), kReply404 + kReply500);
    EXPECT_EQ(request(get("//fwfiles.//update.json")), kReply404 + kReply500);
    EXPECT_EQ(request(get("/fwfiles/update.json.")), kReply404 + kReply500);
}

// Whether another letter case names the same file depends on the system; it has the same lock then.
TEST_P(FileAliasTest, LocksNotificationInAnyLetterCase) {
    if (!QFile::exists(site_.rootPath(u"Notifications/N.json"_s))) {
        GTEST_SKIP() << "this system distinguishes letter case in file names";
    }
    QLockFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.tryLock());
    startGateway();
    EXPECT_EQ(request(get("/notifications/N.json")), kReply500 + kReply500);
    EXPECT_EQ(request(resetRequestFor("/NOTIFICATIONS/N.JSON", "2024-06-01")),
              kReply500 + kReply500);
    EXPECT_EQ(site_.readFile(u"notifications/n.json"_s), kNotification);
}

} // namespace
} // namespace quorin::test

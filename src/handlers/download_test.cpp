#include "handlers/download.h"

#include "handlers/handler_fixture.h"
#include "support/raw_socket.h"
#include "support/system.h"

#include <QProcess>

#include <functional>
#include <thread>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class SendFileTest : public HandlerTest {
protected:
    static QByteArray header(qsizetype size) {
        return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(size) +
               "\r\nContent-Type: inode/directory\r\n\r\n";
    }

    // Limits chunks to 4 bytes, and calls `action` when the first has been sent. The client sends
    // something after the header, so that the socket object sends the chunk and reports it.
    void afterFirstChunk(const std::function<void()>& action) {
        GatewaySettings::instance().ThreadReadBufferSize = 4;
        QObject::connect(context_.socket.get(), &QSslSocket::bytesWritten,
                         [this, action](qint64 bytes) {
                             if (bytes == 4) {
                                 action();
                             } else {
                                 connection_->client().send("more");
                             }
                         });
    }
};

TEST_F(SendFileTest, SendsHeaderAndContentAndLogsLine) {
    context_.requestUrl = QUrl(u"/fwfiles/a.zip"_s);
    sendFile(context_, QFileInfo(data_.write(u"root/fwfiles/a.zip"_s, "content")));
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_FALSE(context_.requestEnd.isNull());
    EXPECT_EQ(received(), header(7) + "content");
    EXPECT_EQ(log_.lines(), QStringList(u"2 GET fwfiles/a.zip - -  200 0"_s));
}

TEST_F(SendFileTest, SendsSameContentWithAnyChunkSize) {
    const QByteArray content = "0123456789";
    const QFileInfo file(data_.write(u"root/a"_s, content));
    for (const int chunk : {-1, 0, 1, 3, 5, 9, 10, 11}) {
        GatewaySettings::instance().ThreadReadBufferSize = chunk;
        connectTo(QHostAddress(QHostAddress::LocalHost));
        sendFile(context_, file);
        EXPECT_EQ(received(), header(10) + content) << chunk;
    }
}

// A publisher has replaced the file since the request was routed.
TEST_F(SendFileTest, AnnouncesSizeOfOpenedFile) {
    const QFileInfo file(data_.write(u"root/a"_s, "content"));
    for (const QByteArray& content : {QByteArray("longer than before"), QByteArray("short")}) {
        EXPECT_EQ(file.size(), 7) << "QFileInfo keeps the size that it has read";
        data_.write(u"root/a"_s, content);
        connectTo(QHostAddress(QHostAddress::LocalHost));
        sendFile(context_, file);
        EXPECT_EQ(received(), header(content.size()) + content);
    }
}

TEST_F(SendFileTest, SendsEmptyFileDespiteZeroTimeout) {
    GatewaySettings::instance().HTTPRequestTimeout = 0;
    sendFile(context_, QFileInfo(data_.write(u"root/a"_s, {})));
    EXPECT_EQ(received(), header(0));
    EXPECT_EQ(log_.lines().size(), 1);
}

TEST_F(SendFileTest, ExpiresAfterHeaderWithZeroTimeout) {
    for (const int timeout : {0, -1}) {
        GatewaySettings::instance().HTTPRequestTimeout = timeout;
        connectTo(QHostAddress(QHostAddress::LocalHost));
        const QFileInfo file(data_.write(u"root/a"_s, "content"));
        EXPECT_EQ(failureOf([&] { sendFile(context_, file); }), u"[End] requet expired"_s);
        EXPECT_TRUE(context_.responseStarted);
        EXPECT_EQ(received(), header(7));
    }
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(SendFileTest, ReportsDisconnectBeforeExpiry) {
    GatewaySettings::instance().HTTPRequestTimeout = 0;
    context_.disconnected = true;
    const QFileInfo file(data_.write(u"root/a"_s, "content"));
    EXPECT_EQ(failureOf([&] { sendFile(context_, file); }), u"[End] socket disconnected"_s);
}

TEST_F(SendFileTest, StopsWhenPeerDisconnects) {
    const QFileInfo file(data_.write(u"root/a"_s, QByteArray(32 * 1024 * 1024, 'x')));
    connection_->client().abort();
    EXPECT_EQ(failureOf([&] { sendFile(context_, file); }), u"[End] socket disconnected"_s);
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_EQ(log_.lines(), QStringList());
}

// A client that shuts down sending counts as disconnected, even if it still reads.
TEST_F(SendFileTest, StopsWhenPeerShutsDownSending) {
    const QFileInfo file(data_.write(u"root/a"_s, QByteArray(32 * 1024 * 1024, 'x')));
    ASSERT_TRUE(shutdownSending(connection_->client().socket().socketDescriptor()));
    EXPECT_EQ(failureOf([&] { sendFile(context_, file); }), u"[End] socket disconnected"_s);
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(SendFileTest, SendsWholeFileToPeerThatSends) {
    const QByteArray content(300'000, 'x');
    const QFileInfo file(data_.write(u"root/a"_s, content));
    connection_->client().send("another request");
    sendFile(context_, file);
    EXPECT_EQ(context_.socket->bytesAvailable(), 15);
    EXPECT_EQ(received(), header(content.size()) + content);
}

TEST_F(SendFileTest, ChecksConnectionBeforeEachChunk) {
    afterFirstChunk([this] { context_.disconnected = true; });
    const QFileInfo file(data_.write(u"root/a"_s, "0123456789"));
    EXPECT_EQ(failureOf([&] { sendFile(context_, file); }), u"[End] socket disconnected"_s);
    EXPECT_EQ(received(), header(10) + "0123");
}

TEST_F(SendFileTest, PadsFileTruncatedDuringTransfer) {
    const QString path = data_.write(u"root/a"_s, "longer than before");
    afterFirstChunk([&path] { EXPECT_TRUE(QFile::resize(path, 5)); });
    sendFile(context_, QFileInfo(path));
    EXPECT_EQ(received(), header(18) + "longe" + QByteArray(13, '\0'));
}

TEST_F(SendFileTest, RefusesFileThatCannotBeOpened) {
    const QString path = data_.path(u"none"_s);
    EXPECT_EQ(failureOf([&] { sendFile(context_, QFileInfo(path)); }),
              u"[End] failed to open " + path + u" for read.");
    EXPECT_FALSE(context_.responseStarted);
    EXPECT_EQ(received(), kPlain500);
}

class SendNotificationFileTest : public HandlerTest {
protected:
    QString notification(const QByteArray& content) const {
        return data_.write(u"root/notifications/n.json"_s, content);
    }
    bool isLocked() const { return QFile::exists(data_.stagingPath(u"n.json.lock"_s)); }
    // The lines that reading the file logs.
    static QStringList linesOfReading(const QString& path) {
        return {u"2 notification file " + path, u"2 Close file. (" + path + u')'};
    }
};

TEST_F(SendNotificationFileTest, SendsWholeFileAndReleasesLock) {
    const QString path = notification("{\"a\":1}");
    context_.requestUrl = QUrl(u"/notifications/n.json"_s);
    sendNotificationFile(context_, QFileInfo(path));
    EXPECT_TRUE(context_.responseStarted);
    EXPECT_FALSE(isLocked());
    EXPECT_EQ(received(), "HTTP/1.1 200 OK\r\nContent-Length: 7\r\n"
                          "Content-Type: application/json\r\n\r\n{\"a\":1}");
    EXPECT_EQ(log_.lines(),
              linesOfReading(path) + QStringList(u"2 GET notifications/n.json - -  200 0"_s));
}

TEST_F(SendNotificationFileTest, FindsContentTypeByNameThenContent) {
    const auto typeOf = [this](const QString& name, const QByteArray& content) -> QByteArray {
        connectTo(QHostAddress(QHostAddress::LocalHost));
        sendNotificationFile(context_,
                             QFileInfo(data_.write(u"root/notifications/"_s + name, content)));
        const QByteArray header = "Content-Type: ";
        const QByteArray reply = received();
        const qsizetype start = reply.indexOf(header) + header.size();
        return reply.mid(start, reply.indexOf("\r\n", start) - start);
    };
    EXPECT_EQ(typeOf(u"n.json"_s, "%PDF-1.4"), "application/json");
    EXPECT_EQ(typeOf(u"n"_s, "%PDF-1.4"), "application/pdf");
    EXPECT_EQ(typeOf(u"n"_s, "text"), "text/plain");
    EXPECT_EQ(typeOf(u"n"_s, QByteArray("\0\1", 2)), "application/octet-stream");
    EXPECT_EQ(typeOf(u"n"_s, ""), "application/x-zerosize");
}

TEST_F(SendNotificationFileTest, SendsCurrentContentOfGrownFile) {
    const QFileInfo file(notification("{}"));
    EXPECT_EQ(file.size(), 2);
    notification("{\"longer\":1}");
    sendNotificationFile(context_, file);
    EXPECT_EQ(received(), "HTTP/1.1 200 OK\r\nContent-Length: 12\r\n"
                          "Content-Type: application/json\r\n\r\n{\"longer\":1}");
}

TEST_F(SendNotificationFileTest, SendsCurrentContentOfShrunkFile) {
    const QFileInfo file(notification("{\"longer\":1}"));
    EXPECT_EQ(file.size(), 12);
    notification("{}");
    sendNotificationFile(context_, file);
    EXPECT_EQ(received(), "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n"
                          "Content-Type: application/json\r\n\r\n{}");
}

TEST_F(SendNotificationFileTest, RefusesFileShorterThanItsSize) {
    // The kernel of Linux reports the size of a page for this file, which contains one line. Wine
    // shows the root folder of the system that it runs on as drive Z.
    const QString path =
        (kOnWindows ? u"Z:"_s : QString()) + u"/sys/kernel/mm/transparent_hugepage/enabled";
    if (!QFile::exists(path)) {
        GTEST_SKIP() << "this system has no file that is shorter than its size";
    }
    EXPECT_EQ(failureOf([&] { sendNotificationFile(context_, QFileInfo(path)); }),
              u"[End] failed to read " + path + u" for read.");
    EXPECT_FALSE(context_.responseStarted);
    EXPECT_FALSE(QFile::exists(data_.stagingPath(u"enabled.lock"_s)));
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(log_.lines(), linesOfReading(path));
}

TEST_F(SendNotificationFileTest, SendsNothingAfterDisconnect) {
    context_.disconnected = true;
    GatewaySettings::instance().HTTPRequestTimeout = 0;
    const QString path = notification("{}");
    EXPECT_EQ(failureOf([&] { sendNotificationFile(context_, QFileInfo(path)); }),
              u"[End] socket disconnected"_s);
    EXPECT_EQ(received(), "");
    EXPECT_EQ(log_.lines(), linesOfReading(path));
}

TEST_F(SendNotificationFileTest, ExpiresBeforeReplyWithZeroTimeout) {
    GatewaySettings::instance().HTTPRequestTimeout = 0;
    const QString path = notification("{}");
    EXPECT_EQ(failureOf([&] { sendNotificationFile(context_, QFileInfo(path)); }),
              u"[End] request expired"_s);
    EXPECT_EQ(received(), "");
    EXPECT_FALSE(isLocked());
}

TEST_F(SendNotificationFileTest, ReleasesLockOfFileThatCannotBeOpened) {
    const QString path = data_.path(u"n.json"_s);
    EXPECT_EQ(failureOf([&] { sendNotificationFile(context_, QFileInfo(path)); }),
              u"[End] failed to open " + path + u" for read.");
    EXPECT_FALSE(isLocked());
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(log_.lines(), QStringList(u"2 notification file " + path));
}

// The file is a FIFO, which holds less than its content: it can be written only while it is read.
TEST_F(SendNotificationFileTest, ReadsFileUnderLock) {
    const QString path = data_.path(u"n.json"_s);
    if (QProcess::execute(u"mkfifo"_s, {path}) != 0) {
        GTEST_SKIP() << "this system has no FIFOs in folders";
    }
    const QByteArray content(1024 * 1024, 'x');
    bool wasLocked = false;
    std::thread writer([&] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        EXPECT_EQ(file.write(content), content.size());
        wasLocked = isLocked();
    });
    sendNotificationFile(context_, QFileInfo(path));
    writer.join();
    EXPECT_TRUE(wasLocked);
    EXPECT_FALSE(isLocked());
    EXPECT_TRUE(received().endsWith(content));
}

TEST_F(SendNotificationFileTest, RetriesLockFiveTimes) {
    ASSERT_TRUE(QDir(data_.stagingPath({})).removeRecursively());
    const QString path = notification("{}");
    EXPECT_EQ(failureOf([&] { sendNotificationFile(context_, QFileInfo(path)); }),
              u"[End] failed to open " + path + u" for read (lock failed).");
    EXPECT_EQ(received(), kPlain500);
    EXPECT_EQ(log_.lines(),
              (QStringList{u"2 notification file " + path, u"2 Failed to Lock (1/5)"_s,
                           u"2 Failed to Lock (2/5)"_s, u"2 Failed to Lock (3/5)"_s,
                           u"2 Failed to Lock (4/5)"_s, u"2 Failed to Lock (5/5)"_s,
                           u"5 Failed to Lock for \"" + data_.stagingPath(u"n.json"_s) + u'"'}));
}

} // namespace
} // namespace quorin::test

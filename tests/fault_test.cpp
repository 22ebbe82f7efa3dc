// Faults of the file system, descriptors and memory: requests fail, the gateway keeps running, and
// it serves again as soon as the fault is gone.

#include "platform/replace_file.h"
#include "support/client.h"
#include "support/clients.h"
#include "support/deadline.h"
#include "support/paused_download.h"
#include "support/permissions.h"
#include "support/serving_test.h"
#include "support/system.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

// Every KiB is different.
QByteArray content(qsizetype size, int seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i + seed) * 31 % 251 + i / 1024 * 7);
    }
    return bytes;
}

// A file changes while it is downloaded.
class DownloadFaultTest : public testing::Test {
protected:
    DownloadFaultTest() {
        site_.writeFile(u"fwfiles/a"_s, old_);
        site_.writeSettings();
    }

    // Starts a download of the file and reads its first MiB.
    std::unique_ptr<Client> begin() const {
        auto client = startDownload(site_.port(), "/fwfiles/a", kLargeSize);
        EXPECT_EQ(client->read(kMiB), old_.left(kMiB));
        return client;
    }

    QString path() const { return site_.rootPath(u"fwfiles/a"_s); }
    QByteArray request() const { return exchange(site_.port(), get("/fwfiles/a")); }

    const QByteArray old_ = content(kLargeSize, 1);
    Site site_;
    Gateway gateway_{site_};
};

TEST_F(DownloadFaultTest, DeliversRemovedFile) {
    gateway_.start();
    const auto client = begin();
    EXPECT_TRUE(QFile::remove(path()));
    if (!kOnWindows) { // where the name remains until the gateway has closed the file
        EXPECT_EQ(request(), kReply404 + kReply500);
    }
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
    EXPECT_TRUE(waitUntil([this] { return request() == kReply404 + kReply500; }));
}

TEST_F(DownloadFaultTest, DeliversOriginalOfReplacedFile) {
    gateway_.start();
    const auto client = begin();
    site_.writeFile(u"fwfiles/new"_s, "the new one");
    const auto replace = [this] {
        return platform::replaceFile(site_.rootPath(u"fwfiles/new"_s), path());
    };
    // Windows does not allow a file to be replaced in this way while the gateway reads it.
    EXPECT_EQ(replace(), !kOnWindows);
    if (!kOnWindows) {
        EXPECT_EQ(request(), streamedReply("the new one"));
    }
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
    EXPECT_TRUE(!kOnWindows || waitUntil(replace));
    EXPECT_EQ(request(), streamedReply("the new one"));
}

TEST_F(DownloadFaultTest, FillsTruncatedFileWithZeros) {
    constexpr qsizetype left = 40 * kMiB + 12'345;
    gateway_.start();
    const auto client = begin();
    ASSERT_TRUE(QFile::resize(path(), left));
    const QByteArray rest = client->readToEnd();
    ASSERT_EQ(rest.size(), kLargeSize - kMiB);
    EXPECT_EQ(rest.left(left - kMiB), old_.mid(kMiB, left - kMiB));
    EXPECT_EQ(rest.mid(left - kMiB), QByteArray(kLargeSize - left, '\0'));
    EXPECT_EQ(request(), streamedReply(old_.left(left)));
}

TEST_F(DownloadFaultTest, FillsEmptiedFileWithZeros) {
    gateway_.start();
    const auto client = begin();
    ASSERT_TRUE(QFile::resize(path(), 0));
    const QByteArray rest = client->readToEnd();
    ASSERT_EQ(rest.size(), kLargeSize - kMiB);
    EXPECT_TRUE(rest.endsWith(QByteArray(kMiB, '\0')));
    EXPECT_EQ(request(), streamedReply(""));
}

TEST_F(DownloadFaultTest, CutsGrownFileAtAnnouncedSize) {
    gateway_.start();
    const auto client = begin();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("more");
    file.close();
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
}

TEST_F(DownloadFaultTest, DeliversFileMadeUnreadable) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system does not allow a file to be made unreadable while it is read";
    }
    const std::optional<QStringList> prefix = prefixBoundByPermissions();
    if (!prefix) {
        GTEST_SKIP() << "file permissions do not apply to this user";
    }
    gateway_.startUnder(*prefix);
    const auto client = begin();
    ASSERT_TRUE(QFile::setPermissions(path(), {}));
    EXPECT_EQ(request(), kReply500 + kReply500);
    EXPECT_THAT(site_.logged(),
                testing::Contains(u"5 [End] failed to open " + path() + u" for read."));
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
    ASSERT_TRUE(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_EQ(request(), streamedReply(old_));
}

class FaultTest : public testing::Test {
protected:
    QByteArray request(const QByteArray& target) const {
        return exchange(site_.port(), get(target));
    }

    // Starts the gateway with a resource limit, or skips the test if the system has no prlimit.
    void startWithLimit(const QString& limit, const Settings& settings) {
        if (QStandardPaths::findExecutable(u"prlimit"_s).isEmpty()) {
            GTEST_SKIP() << "this system has no prlimit";
        }
        site_.writeSettings(settings);
        gateway_.startUnder({u"prlimit"_s, limit});
        ASSERT_EQ(request("/fwfiles/a"), streamedReply(small_));
    }

    // Changes a resource limit of the running gateway.
    void limit(const QString& limit) const {
        ASSERT_EQ(QProcess::execute(u"prlimit"_s,
                                    {u"--pid"_s, QString::number(gateway_.processId()), limit}),
                  0);
    }

    FaultTest() { site_.writeFile(u"fwfiles/a"_s, small_); }

    const QByteArray small_ = content(100'000, 3);
    Site site_;
    Gateway gateway_{site_};
};

TEST_F(FaultTest, ServesAgainWhenDocumentRootReturns) {
    const QString root = site_.rootPath(QString()).chopped(1);
    const QString away = root + u"-away";
    ASSERT_TRUE(QDir().rename(root, away));
    site_.writeSettings();
    gateway_.start();
    EXPECT_EQ(request("/fwfiles/a"), kReply404 + kReply500);
    EXPECT_EQ(request("/api/x"), kReply500);
    ASSERT_TRUE(QDir().rename(away, root));
    EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    ASSERT_TRUE(QDir().rename(root, away));
    EXPECT_EQ(request("/fwfiles/a"), kReply404 + kReply500);
    EXPECT_EQ(gateway_.stop(), 0);
}

// Connections that arrive while no descriptors are free wait; none is refused.
TEST_F(FaultTest, ServesConnectionsBeyondDescriptorLimit) {
    Settings settings;
    settings.MaxUserSession = "16";
    settings.ConnectionTimeout = "30";
    startWithLimit(u"--nofile=64:64"_s, settings);
    if (IsSkipped()) {
        return;
    }
    Clients silent(site_.port(), 40);
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    Clients requesting(site_.port(), 15);
    requesting.send(get("/fwfiles/a"));
    silent.close();
    for (const auto& client : requesting) {
        EXPECT_EQ(client->readToEnd(), streamedReply(small_));
    }
    EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(FaultTest, StopsWhileConnectionsAwaitDescriptors) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    startWithLimit(u"--nofile=64:64"_s, settings);
    if (IsSkipped()) {
        return;
    }
    Clients silent(site_.port(), 40);
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    silent[0].abort(); // frees descriptors while other connections still wait
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// The limit changes while the gateway runs, so it cannot have been taken into account at the start.
TEST_F(FaultTest, HoldsConnectionUntilDescriptorIsFree) {
    startWithLimit(u"--nofile=256:256"_s, {});
    if (IsSkipped()) {
        return;
    }
    // Starts all threads of the pool, each of which opens descriptors for its event loop.
    Clients silent(site_.port(), 10);
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, 11));
    silent.close();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, 11));
    limit(u"--nofile=4:256"_s);
    Client client(site_.port());
    client.send(get("/fwfiles/a"));
    // The connection must wait. No event can be awaited: the log has no descriptor either.
    EXPECT_FALSE(client.socket().waitForReadyRead(500));
    limit(u"--nofile=256:256"_s);
    EXPECT_EQ(client.readToEnd(), streamedReply(small_));
    EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    EXPECT_EQ(gateway_.stop(), 0);
}

class DescriptorFaultTest : public FaultTest {
protected:
    // A client with a download that the gateway cannot finish before the client reads on.
    std::unique_ptr<Client> beginDownload() const {
        auto client = std::make_unique<Client>(site_.port());
        client->limitReadAhead(4096);
        client->send(get("/fwfiles/large"));
        return client;
    }

    // Starts a gateway that may have 1,024 descriptors, where descriptors are limited, and serve
    // 300 sessions.
    void startWith1024Descriptors() {
        writeLargeFile();
        Settings settings;
        settings.MaxUserSession = "300";
        if (kOnWindows) { // which sets no limit
            site_.writeSettings(settings);
            gateway_.start();
        } else {
            startWithLimit(u"--nofile=1024:1024"_s, settings);
        }
    }

    void writeLargeFile() const {
        site_.writeFile(u"fwfiles/large"_s, {});
        ASSERT_TRUE(QFile::resize(site_.rootPath(u"fwfiles/large"_s), 48 * kMiB));
    }

    static constexpr int kAtOnce = 180;
};

TEST_F(DescriptorFaultTest, Serves180DownloadsInTurn) {
    startWith1024Descriptors();
    if (IsSkipped()) {
        return;
    }
    constexpr int group = 10; // an idle gateway takes up to 100 ms to notice a connection
    std::vector<std::unique_ptr<Client>> clients;
    while (clients.size() < kAtOnce) {
        for (int i = 0; i < group; ++i) {
            clients.push_back(beginDownload());
        }
        for (std::size_t i = clients.size() - group; i < clients.size(); ++i) {
            ASSERT_FALSE(clients[i]->read(1).isEmpty()) << "client " << i;
        }
    }
    clients.clear();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(DescriptorFaultTest, Serves180Of400DownloadsAtOnce) {
    startWith1024Descriptors();
    if (IsSkipped()) {
        return;
    }
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 400; ++i) {
        clients.push_back(beginDownload());
    }
    const auto served = [&clients] {
        QCoreApplication::processEvents();
        return std::count_if(clients.begin(), clients.end(), [](const auto& client) {
            return client->socket().bytesAvailable() > 0;
        });
    };
    EXPECT_TRUE(waitUntil([&] { return served() >= kAtOnce; })) << served();
    clients.clear();
    EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(DescriptorFaultTest, RefusesInLegacyModeWithoutDescriptors) {
    writeLargeFile();
    Settings settings;
    settings.MaxUserSession = "50";
    settings.IsMadeClientRequestWaited = "false";
    startWithLimit(u"--nofile=64:64"_s, settings);
    if (IsSkipped()) {
        return;
    }
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 30; ++i) {
        clients.push_back(beginDownload());
    }
    int served = 0;
    int refused = 0;
    for (const auto& client : clients) {
        const QByteArray begin = client->read(12);
        served += begin == "HTTP/1.1 200" ? 1 : 0;
        refused += begin == "HTTP/1.1 503" ? 1 : 0;
    }
    EXPECT_GE(served, 6);
    EXPECT_EQ(served + refused, 30);
    EXPECT_EQ(site_.logged().count(u"5 [End] connection refused: too few free descriptors"_s),
              refused);
    clients.clear();
    EXPECT_TRUE(waitUntil([this] { return request("/fwfiles/a") == streamedReply(small_); }));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

class MemoryFaultTest : public FaultTest {
protected:
    void SetUp() override {
        if (QUORIN_IS_SANITIZED) {
            GTEST_SKIP() << "sanitizers reserve more address space than the limits of this test";
        }
    }

    // Allows the gateway `more` bytes of address space than it has now.
    void limitMemory(qint64 more) const {
        QFile file(u"/proc/%1/statm"_s.arg(gateway_.processId()));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const qint64 pages = file.readAll().split(' ').constFirst().toLongLong();
        constexpr qint64 pageSize = 4096;
        limit(u"--as=%1:unlimited"_s.arg(pages * pageSize + more));
    }
    void removeLimit() const { limit(u"--as=unlimited:unlimited"_s); }
};

TEST_F(MemoryFaultTest, RefusesDocumentThatExceedsMemory) {
    startWithLimit(u"--core=0"_s, {});
    if (IsSkipped()) {
        return;
    }
    const QByteArray document = content(200 * kMiB, 5);
    site_.writeFile(u"notifications/n.json"_s, document);
    limitMemory(64 * kMiB);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(request("/notifications/n.json"), kReply500);
        EXPECT_EQ(exchange(site_.port(), resetRequestFor("/notifications/n.json", "x")), kReply500);
        EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    }
    removeLimit();
    EXPECT_TRUE(request("/notifications/n.json").endsWith(document));
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(MemoryFaultTest, RecoversFromThreadStartFailure) {
    Settings settings;
    settings.MaxUserSession = "64";
    startWithLimit(u"--core=0"_s, settings);
    if (IsSkipped()) {
        return;
    }
    limitMemory(40 * kMiB);
    Clients silent(site_.port(), 40);
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] fail to start worker thread"_s));
    silent.close();
    // Connections still fail until the queue is empty and the pool's threads are idle, which
    // follows the last line that the workers log.
    EXPECT_TRUE(waitUntil([this] { return request("/fwfiles/a") == streamedReply(small_); }));
    removeLimit();
    Clients requesting(site_.port(), 40);
    requesting.send(get("/fwfiles/a"));
    for (const auto& client : requesting) {
        EXPECT_EQ(client->readToEnd(), streamedReply(small_));
    }
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test

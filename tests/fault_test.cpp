// What the gateway does when its surroundings fail it: requests fail, it stays, and it serves again
// by itself when the fault has gone.

#include "support/client.h"
#include "support/deadline.h"
#include "support/process_figures.h"
#include "support/serving_test.h"
#include "support/system.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr qsizetype kMiB = 1024 * 1024;

QByteArray header(qsizetype size) {
    return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(size) +
           "\r\nContent-Type: inode/directory\r\n\r\n";
}

// No two of its kibibytes are the same.
QByteArray content(qsizetype size, int seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i + seed) * 31 % 251 + i / 1024 * 7);
    }
    return bytes;
}

// Larger than what the system takes in between a server and a client that does not read.
constexpr qsizetype kSize = 48 * kMiB;

// A file changes while it is on its way.
class DownloadFaultTest : public testing::Test {
protected:
    DownloadFaultTest() {
        site_.writeFile(u"fwfiles/a"_s, old_);
        site_.writeSettings();
    }

    void SetUp() override {
        if (kOnWindows) {
            GTEST_SKIP() << "this system lets nobody touch a file that is being read";
        }
    }

    // A download whose beginning has arrived; the rest waits.
    std::unique_ptr<Client> begin() const {
        auto client = std::make_unique<Client>(site_.port());
        client->limitReadAhead(kMiB);
        client->send(get("/fwfiles/a"));
        EXPECT_EQ(client->read(header(kSize).size()), header(kSize));
        EXPECT_EQ(client->read(kMiB), old_.left(kMiB));
        return client;
    }

    QString path() const { return site_.rootPath(u"fwfiles/a"_s); }
    QByteArray ask() const { return exchange(site_.port(), get("/fwfiles/a")); }

    const QByteArray old_ = content(kSize, 1);
    Site site_;
    Gateway gateway_{site_};
};

TEST_F(DownloadFaultTest, aFileThatIsRemovedArrivesWhole) {
    gateway_.start();
    const auto client = begin();
    ASSERT_TRUE(QFile::remove(path()));
    EXPECT_EQ(ask(), kReply404 + kReply500);
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
}

TEST_F(DownloadFaultTest, aFileThatIsReplacedArrivesAsItWas) {
    gateway_.start();
    const auto client = begin();
    site_.writeFile(u"fwfiles/new"_s, "the new one");
    ASSERT_TRUE(QFile::remove(path()));
    ASSERT_TRUE(QFile::rename(site_.rootPath(u"fwfiles/new"_s), path()));
    EXPECT_EQ(ask(), header(11) + "the new one");
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
}

TEST_F(DownloadFaultTest, behindTheEndOfATruncatedFileComeZeros) {
    constexpr qsizetype left = 40 * kMiB + 12'345;
    gateway_.start();
    const auto client = begin();
    ASSERT_TRUE(QFile::resize(path(), left));
    const QByteArray rest = client->readToEnd();
    ASSERT_EQ(rest.size(), kSize - kMiB);
    EXPECT_EQ(rest.left(left - kMiB), old_.mid(kMiB, left - kMiB));
    EXPECT_EQ(rest.mid(left - kMiB), QByteArray(kSize - left, '\0'));
    EXPECT_EQ(ask(), header(left) + old_.left(left));
}

TEST_F(DownloadFaultTest, aFileThatIsEmptiedIsFilledUpWithZeros) {
    gateway_.start();
    const auto client = begin();
    ASSERT_TRUE(QFile::resize(path(), 0));
    const QByteArray rest = client->readToEnd();
    ASSERT_EQ(rest.size(), kSize - kMiB);
    EXPECT_TRUE(rest.endsWith(QByteArray(kMiB, '\0')));
    EXPECT_EQ(ask(), header(0));
}

TEST_F(DownloadFaultTest, aFileThatGrowsIsCutAtItsAnnouncedSize) {
    gateway_.start();
    const auto client = begin();
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("more");
    file.close();
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
}

TEST_F(DownloadFaultTest, aFileThatIsMadeUnreadableArrivesWholeAndIsThenRefused) {
    QFile probe(path());
    probe.setPermissions({});
    const bool isBound = !probe.open(QIODevice::ReadOnly);
    probe.close();
    probe.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (isBound) {
        gateway_.start();
    } else if (!QStandardPaths::findExecutable(u"setpriv"_s).isEmpty()) {
        gateway_.startUnder({u"setpriv"_s, u"--bounding-set=-dac_override,-dac_read_search"_s});
    } else {
        GTEST_SKIP() << "permissions do not bind whoever runs this";
    }
    const auto client = begin();
    ASSERT_TRUE(QFile::setPermissions(path(), {}));
    EXPECT_EQ(ask(), kReply500 + kReply500);
    EXPECT_THAT(site_.logged(),
                testing::Contains(u"5 [End] failed to open " + path() + u" for read."));
    EXPECT_EQ(client->readToEnd(), old_.mid(kMiB));
    ASSERT_TRUE(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner));
    EXPECT_EQ(ask(), header(kSize) + old_);
}

class FaultTest : public testing::Test {
protected:
    QByteArray ask(const QByteArray& target) const { return exchange(site_.port(), get(target)); }

    // Where the system has no such command, the test is skipped.
    void startWithLimit(const QString& limit, const Settings& settings) {
        if (QStandardPaths::findExecutable(u"prlimit"_s).isEmpty()) {
            GTEST_SKIP() << "this system has no prlimit";
        }
        site_.writeSettings(settings);
        gateway_.startUnder({u"prlimit"_s, limit});
        ASSERT_EQ(ask("/fwfiles/a"), header(small_.size()) + small_);
    }

    // From now on, for the running gateway.
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

TEST_F(FaultTest, withoutADocumentRootNothingIsFoundUntilItIsThere) {
    const QString root = site_.rootPath(QString()).chopped(1);
    const QString away = root + u"-away";
    ASSERT_TRUE(QDir().rename(root, away));
    site_.writeSettings();
    gateway_.start();
    EXPECT_EQ(ask("/fwfiles/a"), kReply404 + kReply500);
    EXPECT_EQ(ask("/api/x"), kReply500);
    ASSERT_TRUE(QDir().rename(away, root));
    EXPECT_EQ(ask("/fwfiles/a"), header(small_.size()) + small_);
    ASSERT_TRUE(QDir().rename(root, away));
    EXPECT_EQ(ask("/fwfiles/a"), kReply404 + kReply500);
    EXPECT_EQ(gateway_.stop(), 0);
}

// Connections that come while there are no descriptors left wait, and nobody is turned away.
TEST_F(FaultTest, moreConnectionsThanDescriptorsAreServedInTheEnd) {
    Settings settings;
    settings.MaxUserSession = "16";
    settings.ConnectionTimeout = "30";
    startWithLimit(u"--nofile=64:64"_s, settings);
    if (IsSkipped()) {
        return;
    }
    std::vector<std::unique_ptr<Client>> silent;
    for (int i = 0; i < 40; ++i) {
        silent.push_back(std::make_unique<Client>(site_.port()));
    }
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    std::vector<std::unique_ptr<Client>> asking;
    for (int i = 0; i < 15; ++i) {
        asking.push_back(std::make_unique<Client>(site_.port()));
        asking.back()->send(get("/fwfiles/a"));
    }
    silent.clear();
    for (const auto& client : asking) {
        EXPECT_EQ(client->readToEnd(), header(small_.size()) + small_);
    }
    EXPECT_EQ(ask("/fwfiles/a"), header(small_.size()) + small_);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(FaultTest, whileConnectionsWaitForDescriptorsQuitStops) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    startWithLimit(u"--nofile=64:64"_s, settings);
    if (IsSkipped()) {
        return;
    }
    std::vector<std::unique_ptr<Client>> silent;
    for (int i = 0; i < 40; ++i) {
        silent.push_back(std::make_unique<Client>(site_.port()));
    }
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(u"3 quit command recieved"_s));
    silent.front()->abort(); // frees descriptors, while others are still being waited for
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// Taken away while the gateway runs, so that it cannot have reckoned with it.
TEST_F(FaultTest, withoutADescriptorToAcceptWithConnectionsWaitForOne) {
    startWithLimit(u"--nofile=256:256"_s, {});
    if (IsSkipped()) {
        return;
    }
    // Every thread of the pool has its event loop.
    {
        std::vector<std::unique_ptr<Client>> all;
        for (int i = 0; i < 10; ++i) {
            all.push_back(std::make_unique<Client>(site_.port()));
        }
        ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, 11));
    }
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, 11));
    limit(u"--nofile=4:256"_s);
    Client client(site_.port());
    client.send(get("/fwfiles/a"));
    // That it lasts is what is tested; the log cannot be written either.
    EXPECT_FALSE(client.socket().waitForReadyRead(500));
    limit(u"--nofile=256:256"_s);
    EXPECT_EQ(client.readToEnd(), header(small_.size()) + small_);
    EXPECT_EQ(ask("/fwfiles/a"), header(small_.size()) + small_);
    EXPECT_EQ(gateway_.stop(), 0);
}

class MemoryFaultTest : public FaultTest {
protected:
    void SetUp() override {
        if (QUORIN_IS_SANITIZED) {
            GTEST_SKIP() << "sanitizers take more address space than there is memory";
        }
        if (!processFigures(QCoreApplication::applicationPid())) {
            GTEST_SKIP() << "this system does not tell what a process uses";
        }
    }

    // Lets the gateway have `more` bytes than it has.
    void bound(qint64 more) const {
        QFile file(u"/proc/%1/statm"_s.arg(gateway_.processId()));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const qint64 pages = file.readAll().split(' ').constFirst().toLongLong();
        limit(u"--as=%1:unlimited"_s.arg(pages * 4096 + more));
    }
    void unbound() const { limit(u"--as=unlimited:unlimited"_s); }
};

TEST_F(MemoryFaultTest, aDocumentThatDoesNotFitIsRefusedAndLaterServed) {
    const QByteArray document = content(200 * kMiB, 5);
    site_.writeFile(u"notifications/n.json"_s, document);
    startWithLimit(u"--core=0"_s, {});
    if (IsSkipped()) {
        return;
    }
    bound(64 * kMiB);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(ask("/notifications/n.json"), kReply500);
        EXPECT_EQ(exchange(site_.port(), "DELETE /notifications/n.json HTTP/1.1\r\n"
                                         "X-Quorin-Notification-Reset-Date: x\r\n\r\n"),
                  kReply500);
        EXPECT_EQ(ask("/fwfiles/a"), header(small_.size()) + small_);
    }
    unbound();
    EXPECT_TRUE(ask("/notifications/n.json").endsWith(document));
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(MemoryFaultTest, withoutMemoryForItsThreadAConnectionFailsAndLaterOnesAreServed) {
    Settings settings;
    settings.MaxUserSession = "64";
    startWithLimit(u"--core=0"_s, settings);
    if (IsSkipped()) {
        return;
    }
    bound(40 * kMiB);
    std::vector<std::unique_ptr<Client>> silent;
    for (int i = 0; i < 40; ++i) {
        silent.push_back(std::make_unique<Client>(site_.port()));
    }
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] fail to start worker thread"_s));
    silent.clear();
    // Connections still fail until the queue is empty and the pool's threads are idle, which
    // follows the last line that the workers log.
    EXPECT_TRUE(waitUntil([this] { return ask("/fwfiles/a") == header(small_.size()) + small_; }));
    unbound();
    std::vector<std::unique_ptr<Client>> asking;
    for (int i = 0; i < 40; ++i) {
        asking.push_back(std::make_unique<Client>(site_.port()));
        asking.back()->send(get("/fwfiles/a"));
    }
    for (const auto& client : asking) {
        EXPECT_EQ(client->readToEnd(), header(small_.size()) + small_);
    }
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test

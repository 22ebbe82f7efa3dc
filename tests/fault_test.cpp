// Faults of the file system and many connections: requests fail, the gateway keeps running, and it
// serves again as soon as the fault is gone.

#include "fault_fixture.h"

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

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

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

class DescriptorFaultTest : public FaultTest {
protected:
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

    static constexpr int kAtOnce = 180;
};

TEST_F(DescriptorFaultTest, Serves180DownloadsInTurn) {
    startWith1024Descriptors();
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

} // namespace
} // namespace quorin::test

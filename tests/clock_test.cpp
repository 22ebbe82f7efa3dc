// Somebody sets the machine's clock while the gateway serves.

#include "support/client.h"
#include "support/serving_test.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr qsizetype kMiB = 1024 * 1024;

// Larger than what the system takes in between a server and a client that does not read.
constexpr qsizetype kSize = 48 * kMiB;

constexpr std::chrono::seconds kConnectionTimeout{2};

class ClockTest : public testing::Test {
protected:
    void SetUp() override {
        if (!QFile::exists(kFakeTime)) {
            GTEST_SKIP() << "nothing here sets the clock of one process";
        }
        if (QUORIN_IS_SANITIZED) {
            GTEST_SKIP() << "what sets the clock and the sanitizers want to be loaded first";
        }
        site_.writeFile(u"fwfiles/a"_s, QByteArray(kSize, 'x'));
        site_.writeFile(u"fwfiles/small"_s, "content");
        Settings settings;
        settings.ConnectionTimeout = QByteArray::number(qlonglong(kConnectionTimeout.count()));
        site_.writeSettings(settings);
        start(gateway_);
    }

    void start(Gateway& gateway) {
        setClock("+0");
        gateway.setEnvironment(u"FAKETIME_TIMESTAMP_FILE"_s, clock_);
        gateway.setEnvironment(u"FAKETIME_NO_CACHE"_s, u"1"_s);
        gateway.setEnvironment(u"FAKETIME_DONT_FAKE_MONOTONIC"_s, u"1"_s);
        gateway.startUnder({u"env"_s, u"LD_PRELOAD="_s + kFakeTime});
        ASSERT_EQ(ask(), small_);
    }

    // From now on the gateway's clock shows so much more or less than the machine's.
    void setClock(const QByteArray& offset) const {
        QFile file(clock_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(offset);
    }

    // A download whose beginning has arrived; the rest waits.
    std::unique_ptr<Client> begin() const {
        auto client = std::make_unique<Client>(site_.port());
        client->limitReadAhead(kMiB);
        client->send(get("/fwfiles/a"));
        EXPECT_EQ(client->read(header_.size()), header_);
        return client;
    }

    QByteArray ask() const { return exchange(site_.port(), get("/fwfiles/small")); }

    const QString kFakeTime = QStringLiteral(QUORIN_FAKETIME);
    const QByteArray header_ = "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(kSize) +
                               "\r\nContent-Type: inode/directory\r\n\r\n";
    const QByteArray small_ =
        "HTTP/1.1 200\r\nContent-Length: 7\r\nContent-Type: inode/directory\r\n\r\ncontent";
    Site site_;
    const QString clock_ = site_.temporaryPath() + u"/clock"_s;
    Gateway gateway_{site_};
    int connections_ = 1; // the one of start()
};

TEST_F(ClockTest, setBackOrForwardDownloadsGoOnAndNewOnesAreServed) {
    for (const QByteArray offset : {"-86400", "+86400"}) {
        setClock("+0");
        const auto client = begin();
        setClock(offset);
        EXPECT_EQ(ask(), small_);
        EXPECT_EQ(client->readToEnd(), QByteArray(kSize, 'x'));
    }
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(ClockTest, whoSaysNothingIsWaitedForAsLongAsBefore) {
    for (const QByteArray offset : {"-86400", "+86400"}) {
        setClock("+0");
        Client silent(site_.port());
        const QDeadlineTimer least(kConnectionTimeout * 9 / 10); // its timer is a coarse one
        ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, ++connections_));
        setClock(offset);
        EXPECT_EQ(silent.readToEnd(), "");
        EXPECT_TRUE(least.hasExpired());
        ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, connections_));
    }
    EXPECT_EQ(site_.logged().count(u"5 [End] connect timeout"_s), 2);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// The log names its files by day.
TEST_F(ClockTest, setBackTheLogGoesOn) {
    Gateway gateway(site_, LogLibrary::Bundled);
    EXPECT_EQ(gateway_.stop(), 0);
    start(gateway);
    setClock("-86400");
    EXPECT_EQ(ask(), small_);
    EXPECT_EQ(gateway.stop(), 0);
    EXPECT_EQ(gateway.errorOutput(), "");
    const QDir folder(site_.logFolder());
    QByteArray text;
    for (const QString& name : folder.entryList({u"*.log"_s}, QDir::Files, QDir::Name)) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        text += file.readAll();
    }
    EXPECT_EQ(text.count("GET fwfiles/small"), 2);
    EXPECT_EQ(text.count("quit command recieved"), 1);
}

} // namespace
} // namespace quorin::test

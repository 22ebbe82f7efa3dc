// The machine's clock is set while the gateway serves.

#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway_clock.h"
#include "support/paused_download.h"
#include "support/serving_test.h"
#include "support/system.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

constexpr std::chrono::seconds kConnectionTimeout{2};

class ClockTest : public testing::Test {
protected:
    void SetUp() override {
        if (const QString obstacle = GatewayClock::obstacle(); !obstacle.isEmpty()) {
            GTEST_SKIP() << obstacle.toStdString();
        }
        site_.writeFile(u"fwfiles/a"_s, large_);
        site_.writeFile(u"fwfiles/small"_s, small_);
        Settings settings;
        settings.ConnectionTimeout = QByteArray::number(qlonglong(kConnectionTimeout.count()));
        site_.writeSettings(settings);
        start(gateway_);
    }

    void start(Gateway& gateway) {
        clock_.attachTo(gateway);
        gateway.start();
        ASSERT_EQ(requestSmallFile(), streamedReply(small_));
    }

    QByteArray requestSmallFile() const { return exchange(site_.port(), get("/fwfiles/small")); }

    const QByteArray large_ = QByteArray(kLargeSize, 'x');
    const QByteArray small_ = "content";
    Site site_;
    const GatewayClock clock_{site_};
    Gateway gateway_{site_};
};

TEST_F(ClockTest, ServesDownloadsAfterClockChange) {
    for (const auto offset : {-24h, 24h}) {
        clock_.set(0s);
        const auto client = startDownload(site_.port(), "/fwfiles/a", kLargeSize);
        clock_.set(offset);
        EXPECT_EQ(requestSmallFile(), streamedReply(small_));
        EXPECT_EQ(client->readToEnd(), large_);
    }
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(ClockTest, KeepsConnectionTimeoutAfterClockChange) {
    int connections = 1; // start() made one
    for (const auto offset : {-24h, 24h}) {
        clock_.set(0s);
        QElapsedTimer timer;
        timer.start();
        Client silent(site_.port());
        ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, ++connections));
        clock_.set(offset);
        EXPECT_EQ(silent.readToEnd(), "");
        EXPECT_GE(timer.elapsed(), earliestExpiry(kConnectionTimeout).count());
        ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, connections));
    }
    EXPECT_EQ(site_.logged().count(u"5 [End] connect timeout"_s), 2);
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// The date is part of the log file's name, so the log may consist of two files.
TEST_F(ClockTest, LogsAfterClockIsSetBack) {
    if (kOnWindows) {
        GTEST_SKIP()
            << "the clock of the logging library cannot be replaced: it is linked statically";
    }
    Gateway gateway(site_, LogLibrary::Bundled);
    EXPECT_EQ(gateway_.stop(), 0);
    start(gateway);
    const auto yesterday = []() -> QByteArray {
        return "_dt:" + QDate::currentDate().addDays(-1).toString(u"yyyyMMdd").toLatin1();
    };
    const QByteArray before = yesterday();
    clock_.set(-24h);
    EXPECT_EQ(requestSmallFile(), streamedReply(small_));
    const QByteArray after = yesterday();
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
    EXPECT_TRUE(text.contains(before) || text.contains(after)) << "the clock must have been set";
}

} // namespace
} // namespace quorin::test

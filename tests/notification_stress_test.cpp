// A notification file that many clients use at the same time, and one whose gateway is killed.

#include "platform/replace_file.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"
#include "support/system.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

const QByteArray kRefused = kReply500 + kReply500;
const QByteArray kReset = kReply204;

const QByteArray kPendingSince = "2000-01-01T00:00:00";
const QByteArray kTarget = "/notifications/n.json";
const QString kFile = u"notifications/n.json"_s;

QByteArray resetRequest(const QByteArray& date) {
    return resetRequestFor(kTarget, date);
}

// A document of at least `size` bytes as the gateway writes it. It has an item that is pending or
// was reset at `date`, and a newer item that keeps the document from being emptied. No part of it
// is a valid document, and `number` identifies it.
QByteArray document(qsizetype size, int number, bool isPending, const QByteArray& date) {
    const QByteArray text = QByteArray::number(number);
    return "{\"A\":" + text + ",\"Filler\":\"" + QByteArray(size, char('a' + number % 26)) +
           "\",\"RemoteExecution\":{\"IsExist\":" + (isPending ? "true" : "false") +
           ",\"LastUpdated\":\"" + date + "\"},\"RemoteSetting\":{\"IsExist\":true," +
           "\"LastUpdated\":\"2999-01-01T00:00:00\"},\"Z\":" + text + "}";
}

QByteArray pendingDocument(qsizetype size, int number) {
    return document(size, number, true, kPendingSince);
}

// The text between the first `before` and the next `after`.
QByteArray between(const QByteArray& text, const QByteArray& before, const QByteArray& after) {
    const qsizetype begin = text.indexOf(before) + before.size();
    return text.mid(begin, text.indexOf(after, begin) - begin);
}

class NotificationStressTest : public testing::Test {
protected:
    NotificationStressTest() {
        Settings settings;
        settings.MaxUserSession = "20";
        site_.writeSettings(settings);
    }

    QString lockPath() const { return site_.stagingPath(u"n.json.lock"_s); }
    QString stagingFile() const { return site_.stagingPath(u"n.json"_s); }

    Site site_;
};

// The least number of gateways killed. Fewer on Windows, where starting the next one takes long.
constexpr int kKills = kOnWindows ? 20 : 120;

// No further gateways are killed after this time, even if an outcome has not occurred.
constexpr std::chrono::minutes kLongestKilling{4};

class KilledGatewayTest : public NotificationStressTest {
protected:
    static constexpr qsizetype kSize = 512 * 1024;

    // Waits until a gateway that was sent a reset should be killed: until it writes the new
    // document, or for a random time of up to twice the `typical` time of a reset.
    void waitForKillTime(std::chrono::nanoseconds typical, bool isWriting) const {
        if (isWriting) {
            const QDeadlineTimer deadline(4 * typical);
            while (!QFile::exists(stagingFile()) && !deadline.hasExpired()) {
            }
        } else {
            std::this_thread::sleep_for(std::chrono::nanoseconds(
                QRandomGenerator::global()->bounded(qint64(2 * typical.count()))));
        }
    }

    // The next gateway breaks the lock of a killed one. A lock file that is still empty names no
    // holder and is not broken within its first 30 seconds, so it is removed here.
    void countAndClearLock() {
        if (QFile::exists(lockPath())) {
            ++leftLock_;
            if (QFileInfo(lockPath()).size() == 0) {
                ++leftEmptyLock_;
                EXPECT_TRUE(QFile::remove(lockPath()));
            }
        }
    }

    // When the process ends is a matter of chance.
    bool hasSeenEachOutcome() const { return leftOld_ > 0 && leftNew_ > 0 && leftStagingFile_ > 0; }

    int leftOld_ = 0;
    int leftNew_ = 0;
    int leftStagingFile_ = 0;
    int leftLock_ = 0;
    int leftEmptyLock_ = 0;
    int answered_ = 0;
};

TEST_F(KilledGatewayTest, LeavesWholeDocumentForNextGateway) {
    const QByteArray date = "2024-06-01T12:00:00";
    QElapsedTimer timer;
    timer.start();
    const QDeadlineTimer end(kLongestKilling);
    int kill = 0;
    for (; kill < kKills || (!hasSeenEachOutcome() && !end.hasExpired()); ++kill) {
        QFile::remove(site_.recordPath());
        Gateway gateway(site_);
        gateway.start();
        Client first(site_.port());
        Client second(site_.port());
        ASSERT_TRUE(site_.waitUntilLogged(u"2 [Start] void __cdecl Worker::run(void)"_s, 2));

        // This gateway serves regardless of what the killed one left.
        site_.writeFile(kFile, pendingDocument(kSize, 2 * kill));
        QElapsedTimer resetTime;
        resetTime.start();
        first.send(resetRequest(date));
        ASSERT_EQ(first.readToEnd(), kReset) << "after kill " << kill;
        const std::chrono::nanoseconds typical(resetTime.nsecsElapsed());
        ASSERT_TRUE(site_.readFile(kFile) == document(kSize, 2 * kill, false, date));
        ASSERT_FALSE(QFile::exists(lockPath()));
        ASSERT_FALSE(QFile::exists(stagingFile()));

        const QByteArray oldDocument = pendingDocument(kSize, 2 * kill + 1);
        site_.writeFile(kFile, oldDocument);
        second.send(resetRequest(date));
        waitForKillTime(typical, kill % 2 == 1);
        gateway.kill();

        const QByteArray content = site_.readFile(kFile);
        const bool isOld = content == oldDocument;
        const bool isNew = content == document(kSize, 2 * kill + 1, false, date);
        ASSERT_TRUE(isOld || isNew) << "kill " << kill << " left " << content.size() << " bytes";
        const bool isAnswered = second.read(kReset.size()) == kReset;
        ASSERT_TRUE(isNew || !isAnswered) << "kill " << kill;
        leftOld_ += isOld;
        leftNew_ += isNew;
        answered_ += isAnswered;
        leftStagingFile_ += QFile::exists(stagingFile());
        countAndClearLock();
        EXPECT_EQ(gateway.errorOutput(), "");
    }
    std::cout << kill << " kills in " << timer.elapsed() / 1000 << " s: " << leftOld_
              << " left the old document, " << leftNew_ << " the new one, " << answered_
              << " of these answered; " << leftLock_ << " left a lock, " << leftEmptyLock_
              << " of these empty; " << leftStagingFile_ << " left a staging file\n";
    EXPECT_GT(leftOld_, 0);
    EXPECT_GT(leftNew_, 0);
    EXPECT_GT(leftStagingFile_, 0);
}

// How long the clients send requests.
std::chrono::seconds stressTime() {
    const int configured = qEnvironmentVariableIntValue("QUORIN_TEST_STRESS_SECONDS");
    return std::chrono::seconds(configured > 0 ? configured : 5);
}

class SharedNotificationTest : public NotificationStressTest {
protected:
    static constexpr qsizetype kSize = 64 * 1024;
    static constexpr int kClientsOfAKind = 8;

    static QByteArray dateOf(int client) {
        return "2024-06-0" + QByteArray::number(client + 1) + "T12:00:00";
    }

    // True for a document written by this test, either unchanged or after a reset by one of the
    // clients.
    bool isWhole(const QByteArray& content) {
        const int number = between(content, "\"A\":", ",").toInt();
        const bool isPending = between(content, "\"IsExist\":", ",") == "true";
        const QByteArray date = between(content, "\"LastUpdated\":\"", "\"");
        bool isDateKnown = isPending && date == kPendingSince;
        for (int client = 0; client < kClientsOfAKind && !isPending; ++client) {
            isDateKnown = isDateKnown || date == dateOf(client);
        }
        pendingSeen_ += isPending;
        return isDateKnown && number <= newest_ &&
               content == document(kSize, number, isPending, date);
    }

    void readOnce() {
        const QByteArray reply = exchange(site_.port(), get(kTarget));
        if (reply == kRefused) {
            ++readsRefused_;
            return;
        }
        ++reads_;
        const qsizetype body = reply.indexOf("\r\n\r\n") + 4;
        const QByteArray content = reply.mid(body);
        EXPECT_TRUE(reply == wholeReply(content)) << reply.left(body).toStdString();
        EXPECT_TRUE(isWhole(content))
            << content.left(50).toStdString() << " ... " << content.right(150).toStdString();
    }

    void resetOnce(int client) {
        const QByteArray reply = exchange(site_.port(), resetRequest(dateOf(client)));
        EXPECT_TRUE(reply == kReset || reply == kRefused) << reply.toStdString();
        ++(reply == kReset ? resets_ : resetsRefused_);
    }

    // Writes a new document under the lock, as the process that creates notifications does.
    void writeOnce() {
        QLockFile lock(lockPath());
        if (!lock.tryLock(5'000)) {
            return;
        }
        const QByteArray next = pendingDocument(kSize, newest_ + 1);
        QFile staged(stagingFile());
        EXPECT_TRUE(staged.open(QIODevice::WriteOnly | QIODevice::Truncate));
        EXPECT_EQ(staged.write(next), next.size());
        staged.close();
        ++newest_;
        EXPECT_TRUE(platform::replaceFile(stagingFile(), site_.rootPath(kFile)));
    }

    // True if each kind of event that the test is about has occurred.
    [[nodiscard]] bool hasSeenAll() const {
        return reads_ > 0 && pendingSeen_ > 0 && resets_ > 0 && newest_ > 0;
    }

    std::atomic<int> newest_ = 0; // number of the newest document
    std::atomic<int> reads_ = 0;
    std::atomic<int> pendingSeen_ = 0;
    std::atomic<int> readsRefused_ = 0;
    std::atomic<int> resets_ = 0;
    std::atomic<int> resetsRefused_ = 0;
};

TEST_F(SharedNotificationTest, ShowsOnlyWholeDocumentsToAllClients) {
    site_.writeFile(kFile, pendingDocument(kSize, 0));
    Gateway gateway(site_);
    gateway.start();
    {
        const QDeadlineTimer end(stressTime());
        const QDeadlineTimer deadline(stressTime() + kTestTimeout);
        // On a slow machine some event may not have occurred by the end.
        const auto isFinished = [&] {
            return deadline.hasExpired() || (end.hasExpired() && hasSeenAll());
        };
        std::vector<std::jthread> clients;
        for (int client = 0; client < kClientsOfAKind; ++client) {
            clients.emplace_back([&] {
                while (!isFinished()) {
                    readOnce();
                }
            });
            clients.emplace_back([&, client] {
                while (!isFinished()) {
                    resetOnce(client);
                }
            });
        }
        while (!isFinished()) {
            writeOnce();
            QThread::msleep(20);
        }
    }
    EXPECT_EQ(gateway.stop(), 0);

    EXPECT_TRUE(isWhole(site_.readFile(kFile)));
    EXPECT_EQ(QDir(site_.stagingPath(QString()))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList());
    // Requests are refused only for lack of the lock; on Windows also if another process has the
    // file open when it is replaced.
    const QStringList logged = site_.logged();
    const auto withoutLock = logged.count(u"5 Failed to Lock for \"" + stagingFile() + u'"');
    if (kOnWindows) {
        EXPECT_LE(withoutLock, readsRefused_ + resetsRefused_);
    } else {
        EXPECT_EQ(withoutLock, readsRefused_ + resetsRefused_);
    }
    EXPECT_EQ(logged.count(u"2 GET notifications/n.json - -  200 0"_s), reads_);
    EXPECT_EQ(logged.count(u"3 DELETE notifications/n.json - -  204 0"_s), resets_);
    std::cout << stressTime().count() << " s: " << reads_ << " reads (" << pendingSeen_
              << " of a pending item) and " << readsRefused_ << " refused, " << resets_
              << " resets and " << resetsRefused_ << " refused, " << newest_
              << " documents written\n";
    EXPECT_TRUE(hasSeenAll());
}

} // namespace
} // namespace quorin::test

// Memory, descriptors and threads of a gateway that serves many, slow or disconnecting clients.

#include "support/client.h"
#include "support/clients.h"
#include "support/deadline.h"
#include "support/paused_download.h"
#include "support/process_figures.h"
#include "support/serving_test.h"

#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr qint64 kKiB = 1024;

// How long the slow readers read. Their file lasts for about nine minutes.
std::chrono::seconds readingTime() {
    const int configured = qEnvironmentVariableIntValue("QUORIN_TEST_READING_SECONDS");
    return std::chrono::seconds(configured > 0 ? configured : 10);
}

class ResourcesTest : public testing::Test {
protected:
    // Sanitizers delay freeing memory, so growth means nothing.
    static constexpr bool isMemoryMeasurable() { return !QUORIN_IS_SANITIZED; }

    static constexpr int kWarmUpRequests = 3;

    void startGateway(const Settings& settings = {}) {
        test::startGateway(gateway_, site_, Transport::Plain, settings);
        // The first request of each kind allocates what the gateway keeps.
        EXPECT_FALSE(exchange(site_.port(), get("/api/WebApiCommScheme")).isEmpty());
        EXPECT_FALSE(exchange(site_.port(), get("/fwfiles/a")).isEmpty());
        site_.writeFile(u"fwfiles/warm-up"_s, QByteArray(kMiB, 'x'));
        EXPECT_FALSE(exchange(site_.port(), get("/fwfiles/warm-up")).isEmpty());
    }

    // Starts `count` threads of the pool, which keep memory of their own.
    void startThreads(int count) const {
        Clients silent(site_.port(), count);
        ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, kWarmUpRequests + count));
        silent.close();
        ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, kWarmUpRequests + count));
    }

    void writeSparseFile(const QString& relative, qint64 size) const {
        site_.writeFile(relative, {});
        QFile file(site_.rootPath(relative));
        ASSERT_TRUE(file.resize(size));
    }

    ProcessFigures figures() const { return processFigures(gateway_.processId()).value(); }

    Site site_;
    Gateway gateway_{site_};
};

TEST_F(ResourcesTest, LimitsMemoryOfSlowReaders) {
    constexpr int count = 16;
    constexpr qint64 chunk = 64 * kKiB;
    constexpr qint64 rate = kMiB; // bytes per second and client
    writeSparseFile(u"fwfiles/large"_s, 512 * kMiB);
    Settings settings;
    settings.MaxUserSession = "32";
    settings.ThreadReadBufferSize = QByteArray::number(chunk);
    startGateway(settings);
    startThreads(count);
    const qint64 before = figures().privateBytes;

    Clients readers(site_.port(), count);
    for (const auto& reader : readers) {
        reader->limitReadAhead(64 * kKiB);
    }
    readers.send(get("/fwfiles/large"));
    qint64 most = 0;
    qint64 readByEach = 0;
    QElapsedTimer timer;
    timer.start();
    const qint64 end = std::chrono::milliseconds(readingTime()).count();
    while (timer.elapsed() < end && readByEach < 512 * kMiB) {
        const qint64 due = std::min(timer.elapsed() * rate / 1000, 512 * kMiB);
        const qint64 piece = std::min(due - readByEach, 256 * kKiB);
        if (piece < 64 * kKiB && due < 512 * kMiB) {
            QThread::msleep(5); // the rate is part of the test
            continue;
        }
        for (const auto& reader : readers) {
            ASSERT_EQ(reader->read(piece).size(), piece);
        }
        readByEach += piece;
        most = std::max(most, figures().privateBytes);
    }
    std::cout << "each of " << count << " clients read " << readByEach / kMiB
              << " MiB; growth at most " << (most - before) / kKiB << " KiB of "
              << count * (chunk + 512 * kKiB) / kKiB << " KiB allowed\n";
    if (!isMemoryMeasurable()) {
        GTEST_SKIP() << "memory cannot be measured with a sanitizer; the transfer passed";
    }
    EXPECT_LE(most - before, count * (chunk + 512 * kKiB));
}

// When the time limit of a chunk expires, the rest of the chunk is not read into memory.
TEST_F(ResourcesTest, LimitsMemoryOfStalledReader) {
    writeSparseFile(u"fwfiles/large"_s, 512 * kMiB);
    Settings settings;
    settings.ThreadReadBufferSize = "0"; // one chunk for the whole file
    startGateway(settings);
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, kWarmUpRequests));
    const qint64 before = figures().privateBytes;
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    qint64 most = 0;
    EXPECT_TRUE(waitUntil([&] {
        most = std::max(most, figures().privateBytes);
        return site_.logged().count(kRunEnds) > kWarmUpRequests;
    }));
    client.limitReadAhead(0);
    EXPECT_LT(client.readToEnd().size(), 64 * kMiB) << "more than the system buffers";
    std::cout << "growth at most " << (most - before) / kKiB << " KiB\n";
    if (!isMemoryMeasurable()) {
        GTEST_SKIP() << "memory cannot be measured with a sanitizer; the transfer ended";
    }
    EXPECT_LE(most - before, 4 * kMiB);
}

TEST_F(ResourcesTest, DoesNotReceiveDataWhileSending) {
    writeSparseFile(u"fwfiles/large"_s, 64 * kMiB);
    startGateway();
    const qint64 before = figures().privateBytes;
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    // The system buffers some of it. The rest stays in this client unless the gateway receives it.
    client.socket().write(QByteArray(64 * kMiB, 'x'));
    qint64 unsent = client.socket().bytesToWrite();
    while (client.socket().waitForBytesWritten(1000)) {
        unsent = client.socket().bytesToWrite();
    }
    EXPECT_GT(unsent, 32 * kMiB);
    if (!isMemoryMeasurable()) {
        GTEST_SKIP() << "memory cannot be measured with a sanitizer; the data was not received";
    }
    EXPECT_LE(figures().privateBytes - before, 4 * kMiB);
}

// Clients disconnect in every state of a connection.
TEST_F(ResourcesTest, ReleasesDroppedConnections) {
    writeSparseFile(u"fwfiles/large"_s, 64 * kMiB);
    Settings settings;
    constexpr int threads = 8;
    settings.MaxUserSession = QByteArray::number(threads);
    startGateway(settings);
    constexpr int connections = 2000;
    constexpr int atOnce = 40; // more than threads, so some wait in the queue
    constexpr int otherConnections = kWarmUpRequests + threads;
    ProcessFigures before;
    {
        // Downloads occupy all threads of the pool: no earlier connection is open, and each of
        // these has a socket and a file.
        std::vector<std::unique_ptr<Client>> downloads;
        for (int i = 0; i < threads; ++i) {
            downloads.push_back(startDownload(site_.port(), "/fwfiles/large", 64 * kMiB));
        }
        before = figures();
        before.descriptors += kDescriptorsOpenedLate - 2 * threads;
    }

    for (int opened = 0; opened < connections; opened += atOnce) {
        Clients clients(site_.port(), atOnce);
        for (int i = 0; i < atOnce; ++i) {
            Client& client = clients[i];
            switch (i % 4) {
            case 0: // before it sends anything
                break;
            case 1: // in the middle of a request
                client.send("GET /fwfiles/large HT");
                break;
            case 2: // in the middle of a download
                client.limitReadAhead(1024);
                client.send(get("/fwfiles/large"));
                break;
            case 3: // after a complete request
                client.send(get("/api/WebApiCommScheme"));
                break;
            }
        }
        EXPECT_FALSE(clients[2].read(1).isEmpty());
        for (const auto& client : clients) {
            client->abort();
        }
    }
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, connections + otherConnections));
    ASSERT_TRUE(waitUntil([&] {
        return figures().descriptors <= before.descriptors + kDescriptorsOpenedLate;
    })) << figures().descriptors
        << " descriptors after " << before.descriptors;
    EXPECT_LE(figures().threads, before.threads);
    std::cout << "descriptors " << before.descriptors << " before, " << figures().descriptors
              << " after; threads " << before.threads << " before, " << figures().threads
              << " after\n";
    EXPECT_EQ(gateway_.stop(), 0);
}

// Starting a thread again later could fail for lack of memory.
TEST_F(ResourcesTest, KeepsIdleThreads) {
    startGateway();
    startThreads(8);
    const int before = figures().threads;
    QThread::sleep(32); // Qt ends a pool's idle threads after 30 s by default
    EXPECT_GE(figures().threads, before);
}

TEST_F(ResourcesTest, StopsWhileQueuedConnectionsAreDropped) {
    Settings settings;
    settings.MaxUserSession = "1";
    settings.ConnectionTimeout = "2";
    startGateway(settings);
    constexpr int count = 50;
    Clients clients(site_.port(), count);
    gateway_.command("quit");
    for (int i = 0; i < count; i += 2) {
        clients[i].abort();
    }
    EXPECT_EQ(gateway_.waitForExit(), 0);
    for (int i = 1; i < count; i += 2) {
        EXPECT_EQ(clients[i].readToEnd(), "");
    }
}

} // namespace
} // namespace quorin::test

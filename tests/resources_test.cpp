// What serving costs the process, and that it gives everything back.

#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/process_figures.h"
#include "support/serving_test.h"
#include "support/site.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr qint64 kKiB = 1024;
constexpr qint64 kMiB = 1024 * kKiB;

// How long the clients of the memory test read. The file ends after about nine minutes.
std::chrono::seconds readingTime() {
    const int configured = qEnvironmentVariableIntValue("QUORIN_TEST_READING_SECONDS");
    return std::chrono::seconds(configured > 0 ? configured : 10);
}

class ResourcesTest : public testing::Test {
protected:
    void SetUp() override {
        if (!processFigures(QCoreApplication::applicationPid())) {
            GTEST_SKIP() << "this system does not tell what a process uses";
        }
    }

    // Sanitizers keep freed memory back, so that growth says nothing.
    static constexpr bool isMemoryTelling() { return !QUORIN_IS_SANITIZED; }

    void startGateway(const Settings& settings = {}) {
        site_.writeSettings(settings);
        gateway_.start();
        // The first request of each kind loads what stays loaded.
        EXPECT_FALSE(exchange(site_.port(), get("/api/WebApiCommScheme")).isEmpty());
        EXPECT_FALSE(exchange(site_.port(), get("/fwfiles/a")).isEmpty());
    }

    void writeSparseFile(const QString& relative, qint64 size) const {
        site_.writeFile(relative, {});
        QFile file(site_.rootPath(relative));
        ASSERT_TRUE(file.resize(size));
    }

    ProcessFigures figures() const { return processFigures(gateway_.processId()).value(); }

    // Waits until all workers have ended, as many as have begun.
    void waitForWorkers() const {
        ASSERT_TRUE(waitUntil([&] {
            const QStringList logged = site_.logged();
            return logged.count(kRunStarts) == logged.count(kRunEnds);
        }));
    }

    Site site_;
    Gateway gateway_{site_};
};

TEST_F(ResourcesTest, sixteenSlowReadersCostAChunkAndALittleEach) {
    constexpr int clients = 16;
    constexpr qint64 chunk = 64 * kKiB;
    constexpr qint64 rate = kMiB; // bytes a second of each client
    writeSparseFile(u"fwfiles/large"_s, 512 * kMiB);
    Settings settings;
    settings.MaxUserSession = "32";
    settings.ThreadReadBufferSize = QByteArray::number(chunk);
    startGateway(settings);
    const qint64 before = figures().residentBytes;

    std::vector<std::unique_ptr<Client>> readers;
    for (int i = 0; i < clients; ++i) {
        readers.push_back(std::make_unique<Client>(site_.port()));
        readers.back()->limitReadAhead(64 * kKiB);
        readers.back()->send(get("/fwfiles/large"));
    }
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
        most = std::max(most, figures().residentBytes);
    }
    std::cout << "each of " << clients << " clients read " << readByEach / kMiB
              << " MiB; growth at most " << (most - before) / kKiB << " KiB of "
              << clients * (chunk + 512 * kKiB) / kKiB << " KiB allowed\n";
    if (!isMemoryTelling()) {
        GTEST_SKIP() << "memory says nothing under a sanitizer; the transfer passed";
    }
    EXPECT_LE(most - before, clients * (chunk + 512 * kKiB));
}

// When the time of its chunk is over, the rest of the chunk is not read into memory.
TEST_F(ResourcesTest, aClientThatReadsNothingCostsAPiece) {
    writeSparseFile(u"fwfiles/large"_s, 512 * kMiB);
    Settings settings;
    settings.ThreadReadBufferSize = "0"; // a chunk is the file
    startGateway(settings);
    waitForWorkers();
    const qint64 before = figures().residentBytes;
    const qsizetype ended = site_.logged().count(kRunEnds);
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    qint64 most = 0;
    EXPECT_TRUE(waitUntil([&] {
        most = std::max(most, figures().residentBytes);
        return site_.logged().count(kRunEnds) > ended;
    }));
    client.limitReadAhead(0);
    EXPECT_LT(client.readToEnd().size(), 64 * kMiB) << "what the system held";
    std::cout << "growth at most " << (most - before) / kKiB << " KiB\n";
    if (!isMemoryTelling()) {
        GTEST_SKIP() << "memory says nothing under a sanitizer; the transfer ended";
    }
    EXPECT_LE(most - before, 4 * kMiB);
}

TEST_F(ResourcesTest, aFloodWhileServingGrowsNothing) {
    writeSparseFile(u"fwfiles/large"_s, 64 * kMiB);
    startGateway();
    const qint64 before = figures().residentBytes;
    Client client(site_.port());
    client.limitReadAhead(4096);
    client.send(get("/fwfiles/large"));
    EXPECT_EQ(client.read(4096).size(), 4096);
    // The system takes in some; the rest waits here, or the gateway would hold it.
    client.socket().write(QByteArray(64 * kMiB, 'f'));
    qint64 unsent = client.socket().bytesToWrite();
    while (client.socket().waitForBytesWritten(1000)) {
        unsent = client.socket().bytesToWrite();
    }
    EXPECT_GT(unsent, 32 * kMiB);
    if (!isMemoryTelling()) {
        GTEST_SKIP() << "memory says nothing under a sanitizer; the flood was held back";
    }
    EXPECT_LE(figures().residentBytes - before, 4 * kMiB);
}

// Connections that are dropped in every state leave nothing behind.
TEST_F(ResourcesTest, twoThousandDroppedConnectionsLeaveNothingBehind) {
    writeSparseFile(u"fwfiles/large"_s, 64 * kMiB);
    Settings settings;
    settings.MaxUserSession = "8";
    startGateway(settings);
    constexpr int connections = 2000;
    constexpr int atOnce = 40; // so some are dropped while they wait in the queue
    // All threads of the pool once, so that their number is known.
    {
        std::vector<std::unique_ptr<Client>> all;
        for (int i = 0; i < 8; ++i) {
            all.push_back(std::make_unique<Client>(site_.port()));
        }
        ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, 10));
    }
    waitForWorkers();
    const ProcessFigures before = figures();

    for (int begun = 0; begun < connections; begun += atOnce) {
        std::vector<std::unique_ptr<Client>> clients;
        for (int i = 0; i < atOnce; ++i) {
            clients.push_back(std::make_unique<Client>(site_.port()));
            Client& client = *clients.back();
            switch (i % 4) {
            case 0: // before anything is sent
                break;
            case 1: // in the middle of a request
                client.send("GET /fwfiles/large HT");
                break;
            case 2: // in the middle of a download
                client.limitReadAhead(1024);
                client.send(get("/fwfiles/large"));
                break;
            case 3: // behind a whole request
                client.send(get("/api/WebApiCommScheme"));
                break;
            }
        }
        EXPECT_FALSE(clients[2]->read(1).isEmpty());
        for (const auto& client : clients) {
            client->abort();
        }
    }
    ASSERT_TRUE(waitUntil([&] { return site_.logged().count(kRunStarts) >= connections + 10; }));
    waitForWorkers();
    ASSERT_TRUE(waitUntil([&] { return figures().descriptors <= before.descriptors; }))
        << figures().descriptors << " descriptors after " << before.descriptors;
    EXPECT_LE(figures().threads, before.threads);
    std::cout << "descriptors " << before.descriptors << " before, " << figures().descriptors
              << " after; threads " << before.threads << " before, " << figures().threads
              << " after\n";
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(ResourcesTest, connectionsDroppedWhileQueuedOrAtQuitEndTheRunCleanly) {
    Settings settings;
    settings.MaxUserSession = "1";
    settings.ConnectionTimeout = "2";
    startGateway(settings);
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<Client>(site_.port()));
    }
    gateway_.command("quit");
    for (std::size_t i = 0; i < clients.size(); i += 2) {
        clients[i]->abort();
    }
    EXPECT_EQ(gateway_.waitForExit(), 0);
    for (std::size_t i = 1; i < clients.size(); i += 2) {
        EXPECT_EQ(clients[i]->readToEnd(), "");
    }
}

} // namespace
} // namespace quorin::test

// Limits of descriptors and memory: requests fail or wait, the gateway keeps running, and it serves
// again once descriptors and memory are available.

#include "fault_fixture.h"
#include "support/clients.h"
#include "support/deadline.h"
#include "support/process_figures.h"

#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include <signal.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class DescriptorLimitTest : public FaultTest {
protected:
    // Sets the limit so that the gateway cannot open another descriptor, but no lower: poll() fails
    // if the limit is lower than the number of descriptors that it polls.
    void forbidDescriptors() const {
        const QString folder = u"/proc/%1/fd/"_s.arg(gateway_.processId());
        int free = 0;
        while (QFileInfo(folder + QString::number(free)).isSymLink()) {
            ++free;
        }
        limit(u"--nofile=%1:256"_s.arg(free));
    }
    void allowDescriptors() const { limit(u"--nofile=256:256"_s); }
};

// Connections that arrive while no descriptors are free wait; none is refused.
TEST_F(DescriptorLimitTest, ServesConnectionsBeyondDescriptorLimit) {
    Settings settings;
    settings.MaxUserSession = "16";
    settings.ConnectionTimeout = "30";
    startWithLimit(u"--nofile=64:64"_s, settings);
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

// In one pass of its event loop, the gateway would accept all connections that wait in the system.
TEST_F(DescriptorLimitTest, LeavesDescriptorsInBurst) {
    constexpr int kLimit = 64;
    startWithLimit(u"--nofile=64:64"_s, {});
    const auto process = static_cast<pid_t>(gateway_.processId());
    ASSERT_EQ(kill(process, SIGSTOP), 0);
    Clients silent(site_.port(), 60);
    ASSERT_EQ(kill(process, SIGCONT), 0);
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    EXPECT_LT(processFigures(process)->descriptors, kLimit);
    silent.close();
    EXPECT_TRUE(waitUntil([this] { return request("/fwfiles/a") == streamedReply(small_); }));
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(DescriptorLimitTest, StopsWhileConnectionsAwaitDescriptors) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    startWithLimit(u"--nofile=64:64"_s, settings);
    Clients silent(site_.port(), 40);
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] connections wait for free descriptors"_s));
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    silent[0].abort(); // frees descriptors while other connections still wait
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// The limit changes while the gateway runs, so it cannot have been taken into account at the start.
TEST_F(DescriptorLimitTest, HoldsConnectionUntilDescriptorIsFree) {
    startWithLimit(u"--nofile=256:256"_s, {});
    // Starts all threads of the pool, each of which opens descriptors for its event loop.
    Clients silent(site_.port(), 10);
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts, 11));
    silent.close();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, 11));
    forbidDescriptors();
    Client client(site_.port());
    client.send(get("/fwfiles/a"));
    // The connection must wait. No event can be awaited: the log has no descriptor either.
    EXPECT_FALSE(client.socket().waitForReadyRead(500));
    allowDescriptors();
    EXPECT_EQ(client.readToEnd(), streamedReply(small_));
    EXPECT_EQ(request("/fwfiles/a"), streamedReply(small_));
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(DescriptorLimitTest, RefusesInLegacyModeWithoutDescriptors) {
    writeLargeFile();
    Settings settings;
    settings.MaxUserSession = "50";
    settings.IsMadeClientRequestWaited = "false";
    startWithLimit(u"--nofile=64:64"_s, settings);
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

class MemoryLimitTest : public FaultTest {
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

TEST_F(MemoryLimitTest, RefusesDocumentThatExceedsMemory) {
    startWithLimit(u"--core=0"_s, {});
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

TEST_F(MemoryLimitTest, RecoversFromThreadStartFailure) {
    Settings settings;
    settings.MaxUserSession = "64";
    startWithLimit(u"--core=0"_s, settings);
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

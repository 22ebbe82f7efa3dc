#include "server/queue_watcher.h"

#include "config/gateway_settings.h"
#include "server/request_queue.h"
#include "server/server_fixture.h"
#include "support/deadline.h"
#include "support/loopback.h"
#include "support/print.h"
#include "support/stub_record.h"
#include "worker/worker.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

const QString kRunStarts = u"2 [Start] void __cdecl Worker::run(void)"_s;

class QueueWatcherTest : public testing::Test {
protected:
    QueueWatcherTest() {
        GatewaySettings::instance() = {};
        GatewaySettings::instance().ConnectionTimeout = 300;
        serverContext_->documentRoot = u"/nowhere"_s;
    }
    ~QueueWatcherTest() override {
        watcher_.Stop();
        watcher_.wait();
        connections_.clear();
        pool_.waitForDone();
        GatewaySettings::instance() = {};
    }

    void allow(int sessions) {
        GatewaySettings::instance().MaxUserSession = sessions;
        pool_.setMaxThreadCount(sessions);
    }

    // Makes a connection and queues its worker.
    Client& enqueue() {
        connections_.push_back(std::make_unique<Loopback>());
        queue_.append(
            std::make_unique<Worker>(connections_.back()->takeDescriptor(), serverContext_));
        return connections_.back()->client();
    }

    qsizetype started() const { return log_.lines().count(kRunStarts); }

    LogRecord log_;
    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    std::vector<std::unique_ptr<Loopback>> connections_;
    QThreadPool pool_;
    RequestQueue queue_;
    QueueWatcher watcher_{&serverContext_->quitRequested, &pool_, &queue_};
};

TEST_F(QueueWatcherTest, StartsNoMoreWorkersThanAllowed) {
    allow(2);
    for (int i = 0; i < 5; ++i) {
        enqueue();
    }
    watcher_.start(QThread::InheritPriority);
    ASSERT_TRUE(waitUntil([this] { return started() == 2; }));
    EXPECT_EQ(queue_.size(), 3u);
    EXPECT_EQ(pool_.activeThreadCount(), 2);
    for (qsizetype ended = 1; ended <= 3; ++ended) {
        connections_.front()->client().abort();
        connections_.erase(connections_.begin());
        ASSERT_TRUE(waitUntil([&] { return started() == 2 + ended; }));
        EXPECT_EQ(queue_.size(), std::size_t(3 - ended));
        EXPECT_LE(pool_.activeThreadCount(), 2);
    }
}

TEST_F(QueueWatcherTest, PollsFasterWhileWorkersWait) {
    EXPECT_EQ(watcher_.nextPause(), std::chrono::milliseconds(100));
    enqueue();
    EXPECT_EQ(watcher_.nextPause(), std::chrono::milliseconds(10));
    queue_.clear();
    EXPECT_EQ(watcher_.nextPause(), std::chrono::milliseconds(100));
}

TEST_F(QueueWatcherTest, StartsWorkersInOrderOfArrival) {
    allow(1);
    for (int i = 0; i < 4; ++i) {
        enqueue().send(get("/" + QByteArray::number(i)));
    }
    watcher_.start(QThread::InheritPriority);
    for (const auto& connection : connections_) {
        EXPECT_TRUE(connection->client().readToEnd().startsWith("HTTP/1.1 404"));
    }
    QStringList missing = log_.lines();
    missing.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    EXPECT_EQ(missing, (QStringList{u"5 [End] /nowhere/0 does not exist or directory"_s,
                                    u"5 [End] /nowhere/1 does not exist or directory"_s,
                                    u"5 [End] /nowhere/2 does not exist or directory"_s,
                                    u"5 [End] /nowhere/3 does not exist or directory"_s}));
}

TEST_F(QueueWatcherTest, StartsNoWorkerWithoutSessions) {
    allow(0);
    enqueue();
    watcher_.start(QThread::InheritPriority);
    watcher_.Stop(); // ends after its first look at the queue, at the latest
    ASSERT_TRUE(waitUntil([this] {
        watcher_.Stop();
        return watcher_.isFinished();
    }));
    EXPECT_EQ(queue_.size(), 1u);
    EXPECT_EQ(started(), 0);
}

TEST_F(QueueWatcherTest, DropsWorkerThatPoolRefuses) {
    allow(1);
    GatewaySettings::instance().MaxUserSession = 5; // more than the pool takes
    Occupant occupant(pool_);
    Client& first = enqueue();
    Client& second = enqueue();
    watcher_.start(QThread::InheritPriority);
    EXPECT_EQ(first.readToEnd(), "");
    EXPECT_EQ(second.readToEnd(), "");
    const QString refused = u"5 [End] fail to start worker thread"_s;
    EXPECT_EQ(log_.lines(), (QStringList{refused, refused}));
    EXPECT_TRUE(queue_.isEmpty());

    occupant.release();
    pool_.waitForDone();
    Client& third = enqueue();
    third.send(get("/third"));
    EXPECT_TRUE(third.readToEnd().startsWith("HTTP/1.1 404"));
}

TEST_F(QueueWatcherTest, StartsNoWorkerAfterQuit) {
    allow(1);
    serverContext_->quitRequested = true;
    enqueue();
    watcher_.start(QThread::InheritPriority);
    ASSERT_TRUE(waitUntil([this] { // after its first look at the queue, at the latest
        watcher_.Stop();
        return watcher_.isFinished();
    }));
    EXPECT_EQ(queue_.size(), 1u);
    EXPECT_EQ(started(), 0);
}

TEST_F(QueueWatcherTest, StopsAfterItsSleep) {
    allow(1);
    watcher_.start(QThread::InheritPriority);
    enqueue();
    ASSERT_TRUE(waitUntil([this] { return started() == 1; }));
    QElapsedTimer timer;
    timer.start();
    watcher_.Stop();
    EXPECT_LT(timer.elapsed(), 1'000) << "Stop() does not wait";
    EXPECT_TRUE(watcher_.wait(QDeadlineTimer(kTestTimeout)));
    EXPECT_LT(timer.elapsed(), 5'000) << "100 ms, with a margin for a busy machine";
}

TEST_F(QueueWatcherTest, RestartsAfterStop) {
    allow(1);
    watcher_.start(QThread::InheritPriority);
    ASSERT_TRUE(waitUntil([this] {
        watcher_.Stop();
        return watcher_.isFinished();
    }));
    enqueue();
    EXPECT_EQ(queue_.size(), 1u);
    watcher_.start(QThread::InheritPriority);
    ASSERT_TRUE(waitUntil([this] { return started() == 1; }));
    connections_.front()->client().abort();
    enqueue();
    EXPECT_TRUE(waitUntil([this] { return started() == 2; })) << "it has ended again";
}

// A thread may be stopped before it has begun.
TEST_F(QueueWatcherTest, EndsWithObjectJustAfterStart) {
    for (int i = 0; i < 20; ++i) {
        QueueWatcher watcher(&serverContext_->quitRequested, &pool_, &queue_);
        watcher.start(QThread::InheritPriority);
    }
}

} // namespace
} // namespace quorin::test

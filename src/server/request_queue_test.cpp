#include "server/request_queue.h"

#include "support/loopback.h"
#include "worker/worker.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>
#include <vector>

namespace quorin::test {
namespace {

class RequestQueueTest : public testing::Test {
protected:
    std::unique_ptr<Worker> makeWorker() {
        return std::make_unique<Worker>(platform::SocketDescriptor(kNoDescriptor), serverContext_);
    }

    static constexpr qintptr kNoDescriptor = -1;
    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    RequestQueue queue_;
};

TEST_F(RequestQueueTest, HasNothingToTakeWhenEmpty) {
    EXPECT_TRUE(queue_.isEmpty());
    EXPECT_EQ(queue_.size(), 0u);
    EXPECT_EQ(queue_.takeFirst(), nullptr);
    queue_.clear();
    EXPECT_TRUE(queue_.isEmpty());
}

TEST_F(RequestQueueTest, TakesWorkerThatWaitedLongest) {
    std::vector<Worker*> appended;
    for (int i = 0; i < 3; ++i) {
        auto worker = makeWorker();
        appended.push_back(worker.get());
        queue_.append(std::move(worker));
    }
    EXPECT_EQ(queue_.size(), 3u);
    EXPECT_EQ(queue_.takeFirst().get(), appended[0]);
    EXPECT_EQ(queue_.takeFirst().get(), appended[1]);
    EXPECT_EQ(queue_.size(), 1u);
    queue_.append(makeWorker());
    EXPECT_EQ(queue_.takeFirst().get(), appended[2]);
    EXPECT_FALSE(queue_.isEmpty());
}

TEST_F(RequestQueueTest, ClosesConnectionsWhenCleared) {
    Loopback first;
    Loopback second;
    queue_.append(std::make_unique<Worker>(first.takeDescriptor(), serverContext_));
    queue_.append(std::make_unique<Worker>(second.takeDescriptor(), serverContext_));
    queue_.clear();
    EXPECT_TRUE(queue_.isEmpty());
    EXPECT_EQ(first.client().readToEnd(), "");
    EXPECT_EQ(second.client().readToEnd(), "");
}

TEST_F(RequestQueueTest, ClosesConnectionsWhenDestroyed) {
    Loopback connection;
    {
        RequestQueue queue;
        queue.append(std::make_unique<Worker>(connection.takeDescriptor(), serverContext_));
    }
    EXPECT_EQ(connection.client().readToEnd(), "");
}

TEST_F(RequestQueueTest, AllowsAppendingWhileTaking) {
    constexpr std::size_t count = 1000;
    std::thread taker([this] {
        for (std::size_t taken = 0; taken < count;) {
            taken += queue_.takeFirst() != nullptr ? 1u : 0u;
        }
    });
    for (std::size_t i = 0; i < count; ++i) {
        queue_.append(makeWorker());
        EXPECT_LE(queue_.size(), count);
    }
    taker.join();
    EXPECT_TRUE(queue_.isEmpty());
}

TEST_F(RequestQueueTest, AllowsAppendingOnSeveralThreads) {
    constexpr std::size_t count = 20'000;
    std::promise<void> start;
    const std::shared_future<void> mayStart = start.get_future();
    std::vector<std::thread> appenders;
    for (int i = 0; i < 4; ++i) {
        appenders.emplace_back([this, mayStart] {
            mayStart.wait();
            for (std::size_t appended = 0; appended < count; ++appended) {
                queue_.append(nullptr);
            }
        });
    }
    start.set_value();
    for (std::thread& appender : appenders) {
        appender.join();
    }
    EXPECT_EQ(queue_.size(), 4 * count);
}

} // namespace
} // namespace quorin::test

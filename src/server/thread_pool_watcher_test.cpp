#include "server/thread_pool_watcher.h"

#include "server/server_fixture.h"
#include "support/deadline.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace quorin::test {
namespace {

class ThreadPoolWatcherTest : public testing::Test {
protected:
    ThreadPoolWatcherTest() {
        QObject::connect(
            &watcher_, &ThreadPoolWatcher::Satisfied, &watcher_,
            [this] {
                ++satisfied_;
                onItsThread_ = QThread::currentThread() == &watcher_;
            },
            Qt::DirectConnection);
    }

    bool waitForEnd() { return watcher_.wait(QDeadlineTimer(kTestTimeout)); }

    std::atomic<bool> quit_ = false;
    std::atomic<int> satisfied_ = 0;
    std::atomic<bool> onItsThread_ = false;
    QThreadPool pool_;
    ThreadPoolWatcher watcher_{&quit_, &pool_};
};

constexpr unsigned long kSomePeriodsMs = 350;

TEST_F(ThreadPoolWatcherTest, EmitsSatisfiedOnceForIdlePoolAfterQuit) {
    quit_ = true;
    QElapsedTimer timer;
    timer.start();
    watcher_.start(QThread::InheritPriority);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(satisfied_, 1);
    EXPECT_TRUE(onItsThread_);
    EXPECT_GE(timer.elapsed(), 99) << "it sleeps before it checks";
    EXPECT_LT(timer.elapsed(), 5'000) << "100 ms, with a margin for a busy machine";
}

TEST_F(ThreadPoolWatcherTest, EmitsNothingWithoutQuit) {
    watcher_.start(QThread::InheritPriority);
    EXPECT_FALSE(watcher_.wait(kSomePeriodsMs));
    EXPECT_EQ(satisfied_, 0);
    quit_ = true;
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(satisfied_, 1);
}

TEST_F(ThreadPoolWatcherTest, EmitsNothingWhileThreadIsActive) {
    Occupant occupant(pool_);
    quit_ = true;
    watcher_.start(QThread::InheritPriority);
    EXPECT_FALSE(watcher_.wait(kSomePeriodsMs));
    EXPECT_EQ(satisfied_, 0);
    occupant.release();
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(satisfied_, 1);
}

TEST_F(ThreadPoolWatcherTest, EmitsSatisfiedOnceWhenStopped) {
    Occupant occupant(pool_);
    watcher_.start(QThread::InheritPriority);
    EXPECT_FALSE(watcher_.wait(kSomePeriodsMs));
    QElapsedTimer timer;
    timer.start();
    watcher_.Stop();
    ASSERT_TRUE(waitForEnd());
    EXPECT_LT(timer.elapsed(), 5'000) << "100 ms, with a margin for a busy machine";
    EXPECT_EQ(satisfied_, 1);
    EXPECT_TRUE(onItsThread_);
}

// A thread may be stopped before it has begun.
TEST_F(ThreadPoolWatcherTest, EndsWithObjectJustAfterStart) {
    for (int i = 0; i < 10; ++i) {
        ThreadPoolWatcher watcher(&quit_, &pool_);
        watcher.start(QThread::InheritPriority);
    }
}

} // namespace
} // namespace quorin::test

#include "handlers/notification_lock.h"

#include "handlers/handler_fixture.h"

#include <QElapsedTimer>

#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class NotificationLockTest : public testing::Test {
protected:
    QString lockPath() const { return data_.stagingPath(u"n.json.lock"_s); }

    LogRecord log_;
    DataFolder data_;
};

TEST_F(NotificationLockTest, BuildsStagingPathFromFileName) {
    EXPECT_EQ(stagingPath(QFileInfo(u"/any/where/notifications/n.json"_s)),
              data_.stagingPath(u"n.json"_s));
    EXPECT_EQ(stagingPath(QFileInfo(u"n%1.json"_s)), data_.stagingPath(u"n%1.json"_s));
}

TEST_F(NotificationLockTest, CreatesLockFileAndRemovesItOnDestruction) {
    {
        NotificationLock lock{QFileInfo(u"/n.json"_s)};
        EXPECT_EQ(lock.stagingPath(), data_.stagingPath(u"n.json"_s));
        EXPECT_FALSE(QFile::exists(lockPath()));
        EXPECT_TRUE(lock.acquire());
        EXPECT_TRUE(QFile::exists(lockPath()));
        EXPECT_FALSE(QFile::exists(lock.stagingPath()));
    }
    EXPECT_FALSE(QFile::exists(lockPath()));
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(NotificationLockTest, CanBeReacquired) {
    NotificationLock lock{QFileInfo(u"/n.json"_s)};
    lock.unlockIfLocked();
    EXPECT_TRUE(lock.acquire());
    lock.unlockIfLocked();
    EXPECT_FALSE(QFile::exists(lockPath()));
    lock.unlockIfLocked();
    EXPECT_TRUE(lock.acquire());
    EXPECT_TRUE(QFile::exists(lockPath()));
}

TEST_F(NotificationLockTest, WaitsOneSecondPerAttempt) {
    QLockFile holder(lockPath());
    ASSERT_TRUE(holder.tryLock());
    NotificationLock lock{QFileInfo(u"/n.json"_s)};
    QElapsedTimer timer;
    timer.start();
    std::vector<int> failedAttempts;
    EXPECT_TRUE(lock.acquire([&](int attempt) {
        failedAttempts.push_back(attempt);
        if (attempt == 1) {
            EXPECT_GE(timer.elapsed(), 990);
            EXPECT_TRUE(holder.isLocked());
            lock.unlockIfLocked();
            EXPECT_TRUE(QFile::exists(lockPath())) << "the holder still holds the lock";
        } else {
            holder.unlock();
        }
    }));
    EXPECT_EQ(failedAttempts, (std::vector<int>{1, 2}));
}

TEST_F(NotificationLockTest, TriesFiveTimesWithoutLogging) {
    QLockFile holder(lockPath());
    ASSERT_TRUE(holder.tryLock());
    NotificationLock lock{QFileInfo(u"/n.json"_s)};
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(lock.acquire());
    EXPECT_GE(timer.elapsed(), 4'950);
    EXPECT_EQ(log_.lines(), QStringList());
    lock.logFailure();
    EXPECT_EQ(log_.lines(),
              QStringList(u"5 Failed to Lock for \"" + data_.stagingPath(u"n.json"_s) + u'"'));
}

TEST_F(NotificationLockTest, FailsAtOnceWithoutStagingFolder) {
    ASSERT_TRUE(QDir(data_.stagingPath({})).removeRecursively());
    NotificationLock lock{QFileInfo(u"/n.json"_s)};
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(lock.acquire());
    EXPECT_LT(timer.elapsed(), 4'000);
    EXPECT_FALSE(QFile::exists(data_.stagingPath({}))) << "the folder must not be created";
}

} // namespace
} // namespace quorin::test

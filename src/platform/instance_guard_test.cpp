#include "platform/instance_guard.h"

#include <QCoreApplication>
#include <QSharedMemory>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

QString testKey() {
    return u"Global\\QUORIN_INSTANCE_GUARD_TEST_%1"_s.arg(QCoreApplication::applicationPid());
}

TEST(InstanceGuardTest, IsReleasedWithItsHolder) {
    InstanceGuard second(testKey());
    {
        InstanceGuard first(testKey());
        EXPECT_TRUE(first.take());
        EXPECT_FALSE(second.take());
        EXPECT_FALSE(second.take()) << "a failed attempt must not release the guard";
    }
    EXPECT_TRUE(second.take());
}

TEST(InstanceGuardTest, OneOfTwoWaitersTakesOver) {
    InstanceGuard waiter(testKey());
    InstanceGuard otherWaiter(testKey());
    {
        InstanceGuard first(testKey());
        EXPECT_TRUE(first.take());
        EXPECT_FALSE(waiter.take());
        EXPECT_FALSE(otherWaiter.take());
    }
    EXPECT_TRUE(waiter.take());
    EXPECT_FALSE(otherWaiter.take());
}

TEST(InstanceGuardTest, HoldsSegmentOfOneByte) {
    InstanceGuard guard(testKey());
    ASSERT_TRUE(guard.take());
    QSharedMemory segment(testKey());
    EXPECT_TRUE(segment.attach());
    EXPECT_GE(segment.size(), 1) << "the system may round it up";
}

TEST(InstanceGuardTest, RespectsSegmentOfAnotherProgram) {
    InstanceGuard guard(testKey());
    {
        QSharedMemory segment(testKey());
        ASSERT_TRUE(segment.create(1));
        EXPECT_FALSE(guard.take());
        EXPECT_FALSE(guard.take());
    }
    EXPECT_TRUE(guard.take());
}

TEST(InstanceGuardTest, IsHeldWhileHolderExists) {
    EXPECT_FALSE(isInstanceGuardHeld(testKey()));
    {
        InstanceGuard guard(testKey());
        ASSERT_TRUE(guard.take());
        EXPECT_TRUE(isInstanceGuardHeld(testKey()));
        EXPECT_TRUE(isInstanceGuardHeld(testKey())) << "asking must not release the guard";
    }
    EXPECT_FALSE(isInstanceGuardHeld(testKey()));
}

} // namespace
} // namespace quorin::platform

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
    QSharedMemory second(testKey());
    {
        QSharedMemory first(testKey());
        EXPECT_TRUE(takeInstanceGuard(first));
        EXPECT_EQ(first.size() >= 1, true);
        EXPECT_FALSE(takeInstanceGuard(second));
        EXPECT_FALSE(takeInstanceGuard(second)) << "a failed attempt must not release the segment";
    }
    EXPECT_TRUE(takeInstanceGuard(second));
}

TEST(InstanceGuardTest, IsHeldWhileHolderExists) {
    EXPECT_FALSE(isInstanceGuardHeld(testKey()));
    {
        QSharedMemory guard(testKey());
        ASSERT_TRUE(takeInstanceGuard(guard));
        EXPECT_TRUE(isInstanceGuardHeld(testKey()));
        EXPECT_TRUE(isInstanceGuardHeld(testKey())) << "asking must not release the segment";
    }
    EXPECT_FALSE(isInstanceGuardHeld(testKey()));
}

} // namespace
} // namespace quorin::platform

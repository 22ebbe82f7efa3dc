#include "platform/instance_guard.h"

#include <QCoreApplication>
#include <QSharedMemory>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

QString keyOfThisProcess() {
    return u"Global\\QUORIN_INSTANCE_GUARD_TEST_%1"_s.arg(QCoreApplication::applicationPid());
}

TEST(InstanceGuardTest, isTakenOnceAndFreeAgainWhenItsHolderGoes) {
    QSharedMemory second(keyOfThisProcess());
    {
        QSharedMemory first(keyOfThisProcess());
        EXPECT_TRUE(takeInstanceGuard(first));
        EXPECT_EQ(first.size() >= 1, true);
        EXPECT_FALSE(takeInstanceGuard(second));
        EXPECT_FALSE(takeInstanceGuard(second)) << "an attempt must not loosen the holder's grip";
    }
    EXPECT_TRUE(takeInstanceGuard(second));
}

} // namespace
} // namespace platform

#include "server/descriptor_budget.h"

#include <gtest/gtest.h>

namespace quorin::test {
namespace {

// The number of connections that it covers.
qintptr sizeOf(const DescriptorBudget& budget, qintptr used) {
    qintptr count = 0;
    while (count < 100'000 && budget.covers(used + count)) {
        ++count;
    }
    return count;
}

TEST(DescriptorBudgetTest, withoutALimitEveryDescriptorIsCovered) {
    EXPECT_TRUE(DescriptorBudget().covers(1'000'000));
}

TEST(DescriptorBudgetTest, whatAllWorkersNeedIsKeptBack) {
    EXPECT_EQ(sizeOf(DescriptorBudget(1024, 16, 100), 16), 1024 - 16 - 8 - 4 * 100);
}

TEST(DescriptorBudgetTest, moreWorkersThanThereCanBeLeaveEachConnectionItsWorker) {
    EXPECT_EQ(sizeOf(DescriptorBudget(1024, 16, 1000), 16), (1024 - 16 - 8) / 5);
    EXPECT_EQ(sizeOf(DescriptorBudget(1024, 16, 2'000'000'000), 16), (1024 - 16 - 8) / 5);
}

TEST(DescriptorBudgetTest, oneConnectionIsAlwaysCovered) {
    EXPECT_EQ(sizeOf(DescriptorBudget(10, 16, 10), 16), 1);
    EXPECT_EQ(sizeOf(DescriptorBudget(0, 0, 0), 0), 1);
}

} // namespace
} // namespace quorin::test

#include "server/descriptor_budget.h"

#include <gtest/gtest.h>

namespace quorin::test {
namespace {

class DescriptorBudgetTest : public testing::Test {
protected:
    std::optional<qintptr> limit_;
    std::optional<qintptr> open_ = 20;
    int counts_ = 0;
    DescriptorBudget budget_{[this] { return limit_; },
                             [this] {
                                 ++counts_;
                                 return open_;
                             }};
};

TEST_F(DescriptorBudgetTest, AdmitsAllWithoutLimit) {
    for (int i = 0; i < 1000; ++i) {
        EXPECT_TRUE(budget_.admitsAnother(1'000'000, 1'000'000));
    }
    EXPECT_EQ(counts_, 0);
}

TEST_F(DescriptorBudgetTest, KeepsWhatWorkersMayOpen) {
    constexpr qintptr needed = 2 * 10 + 4 * (3 + 1) + 8;
    limit_ = 20 + needed;
    EXPECT_TRUE(budget_.admitsAnother(10, 3));
    limit_ = 20 + needed - 1;
    EXPECT_FALSE(budget_.admitsAnother(10, 3));
}

TEST_F(DescriptorBudgetTest, CountsEachConnectionNearLimit) {
    limit_ = 20 + 4 + 8 + 9;
    for (int i = 1; i <= 5; ++i) {
        EXPECT_TRUE(budget_.admitsAnother(0, 0));
        EXPECT_EQ(counts_, i);
    }
}

TEST_F(DescriptorBudgetTest, UsesHalfOfFreeBeforeNextCount) {
    limit_ = 20 + 4 + 8 + 100;
    for (int i = 0; i <= 10; ++i) {
        EXPECT_TRUE(budget_.admitsAnother(0, 0));
    }
    EXPECT_EQ(counts_, 1);
    open_ = 200; // the host's own files
    EXPECT_FALSE(budget_.admitsAnother(0, 0));
    EXPECT_EQ(counts_, 2);
}

TEST_F(DescriptorBudgetTest, ReadsLimitAtEachCount) {
    limit_ = 30;
    EXPECT_FALSE(budget_.admitsAnother(0, 0));
    limit_ = 40;
    EXPECT_TRUE(budget_.admitsAnother(0, 0));
    limit_ = 30;
    EXPECT_FALSE(budget_.admitsAnother(0, 0));
}

TEST_F(DescriptorBudgetTest, AdmitsNoneWhenItCannotCount) {
    limit_ = 1024;
    open_ = std::nullopt;
    EXPECT_FALSE(budget_.admitsAnother(0, 0));
}

TEST_F(DescriptorBudgetTest, AdmitsNoneWithHugeReservation) {
    limit_ = 1024;
    EXPECT_FALSE(budget_.admitsAnother(2'000'000'000, 0));
}

} // namespace
} // namespace quorin::test

#include "platform/descriptors.h"

#include <QFile>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <optional>

#include <sys/resource.h>

namespace quorin::platform {
namespace {

// Sets the soft limit of this process during the object's lifetime.
class SoftLimit {
public:
    explicit SoftLimit(rlim_t limit) {
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit lowered{limit, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &lowered), 0);
    }
    ~SoftLimit() { setrlimit(RLIMIT_NOFILE, &before_); }
    SoftLimit(const SoftLimit&) = delete;
    SoftLimit& operator=(const SoftLimit&) = delete;

    [[nodiscard]] rlim_t hardLimit() const { return before_.rlim_max; }

private:
    rlimit before_{};
};

TEST(DescriptorsTest, CountsOpenFiles) {
    const qintptr before = openDescriptors().value();
    EXPECT_EQ(openDescriptors(), before) << "counting leaves nothing open";
    {
        QTemporaryFile file;
        ASSERT_TRUE(file.open());
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DescriptorsTest, CountIsWithinLimit) {
    EXPECT_GE(openDescriptors().value(), 3);
    EXPECT_LE(openDescriptors().value(), descriptorLimit().value());
}

TEST(DescriptorsTest, ChecksForFreeDescriptorWithoutKeepingIt) {
    const qintptr before = openDescriptors().value();
    EXPECT_TRUE(hasFreeDescriptor());
    EXPECT_EQ(openDescriptors(), before);
}

TEST(DescriptorsTest, CannotCountWithoutFreeDescriptor) {
    if (QUORIN_IS_SANITIZED) {
        GTEST_SKIP() << "the sanitizer takes objects for invalid if it cannot open a descriptor";
    }
    std::optional<qintptr> count = 0;
    bool isFree = true;
    {
        const SoftLimit limit(0);
        count = openDescriptors();
        isFree = hasFreeDescriptor();
    }
    EXPECT_EQ(count, std::nullopt);
    EXPECT_FALSE(isFree);
}

TEST(DescriptorsTest, RaisesSoftLimitToHardLimit) {
    const SoftLimit limit(100);
    EXPECT_EQ(descriptorLimit(), 100);
    raiseDescriptorLimit();
    rlimit raised{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &raised), 0);
    EXPECT_EQ(raised.rlim_cur, limit.hardLimit());
}

} // namespace
} // namespace quorin::platform

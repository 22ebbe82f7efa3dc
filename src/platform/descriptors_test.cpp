#include "platform/descriptors.h"

#include <QFile>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quorin::platform {
namespace {

class DescriptorsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!descriptorLimit()) {
            EXPECT_EQ(openDescriptors(), 0);
            EXPECT_TRUE(hasFreeDescriptor());
            GTEST_SKIP() << "this system sets no limit";
        }
    }
};

TEST_F(DescriptorsTest, CountsOpenFiles) {
    const qintptr before = openDescriptors().value();
    EXPECT_EQ(openDescriptors(), before) << "counting leaves nothing open";
    {
        QTemporaryFile file;
        ASSERT_TRUE(file.open());
        EXPECT_EQ(openDescriptors(), before + 1);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(DescriptorsTest, CountIsWithinLimit) {
    EXPECT_GE(openDescriptors().value(), 3);
    EXPECT_LE(openDescriptors().value(), descriptorLimit().value());
}

TEST_F(DescriptorsTest, ChecksForFreeDescriptorWithoutKeepingIt) {
    const qintptr before = openDescriptors().value();
    EXPECT_TRUE(hasFreeDescriptor());
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
} // namespace quorin::platform

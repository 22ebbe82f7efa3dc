#include "platform/descriptors.h"

#include <QFile>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace quorin::platform {
namespace {

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

} // namespace
} // namespace quorin::platform

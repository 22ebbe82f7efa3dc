#include "platform/descriptors.h"

#include <gtest/gtest.h>

#include <optional>

namespace quorin::platform {
namespace {

TEST(DescriptorsTest, ReportsThatHandlesAreNotLimited) {
    EXPECT_EQ(descriptorLimit(), std::nullopt);
    EXPECT_EQ(openDescriptors(), 0);
    EXPECT_TRUE(hasFreeDescriptor());
}

} // namespace
} // namespace quorin::platform

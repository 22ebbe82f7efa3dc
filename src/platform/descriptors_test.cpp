#include "platform/descriptors.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

namespace platform {
namespace {

class DescriptorsTest : public testing::Test {
protected:
    void SetUp() override {
        if (!descriptorLimit()) {
            EXPECT_TRUE(nextDescriptor().has_value());
            GTEST_SKIP() << "this system sets no bound";
        }
    }
};

TEST_F(DescriptorsTest, theNextIsTheOneThatAFileGets) {
    const qintptr next = nextDescriptor().value();
    EXPECT_EQ(nextDescriptor(), next) << "to look takes none away";
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    EXPECT_EQ(file.handle(), next);
    EXPECT_GT(nextDescriptor(), next);
}

TEST_F(DescriptorsTest, theNextIsBelowTheLimit) {
    EXPECT_LT(nextDescriptor().value(), descriptorLimit().value());
}

} // namespace
} // namespace platform

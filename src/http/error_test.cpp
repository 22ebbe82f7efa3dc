#include "http/error.h"

#include <gtest/gtest.h>

#include <string>

namespace quorin {
namespace {

TEST(Error, DefaultsToCodeZero) {
    const Error error;

    EXPECT_EQ(error.code, 0);
    EXPECT_EQ(error.message, "");
}

TEST(Error, MalformedIsSmallestInt32) {
    EXPECT_EQ(Error::kMalformed, -2147483647 - 1);
    EXPECT_EQ(static_cast<std::uint32_t>(Error::kMalformed), 0x80000000U);
}

TEST(Error, CopyKeepsCodeAndMessage) {
    const Error error(7, "seven");
    const Error copy(error);

    EXPECT_EQ(copy.code, 7);
    EXPECT_EQ(copy.message, "seven");
}

TEST(Error, DerivesFromStandardException) {
    try {
        throw Error(7, "seven");
    } catch (const std::exception& caught) {
        EXPECT_STREQ(caught.what(), "seven");
        return;
    }
    FAIL() << "no exception was thrown";
}

} // namespace
} // namespace quorin

#include "http/ascii.h"

#include <gtest/gtest.h>

namespace quorin::http {
namespace {

TEST(Ascii, OnlyTheLettersAToZHaveAnUpperCase) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool isLower = byte >= 0x61 && byte <= 0x7A;
        const auto c = static_cast<char>(byte); // negative from 0x80 on
        const auto expected = static_cast<char>(isLower ? byte - 0x20 : byte);
        EXPECT_EQ(toUpper(c), expected) << byte;
    }
}

TEST(Ascii, ANameIsMatchedAsAWhole) {
    EXPECT_TRUE(isNamed("get", "GET"));
    EXPECT_TRUE(isNamed("gEt", "GET"));
    EXPECT_TRUE(isNamed("", ""));
    EXPECT_FALSE(isNamed("ge", "GET"));
    EXPECT_FALSE(isNamed("gets", "GET"));
    EXPECT_FALSE(isNamed("", "GET"));
    EXPECT_FALSE(isNamed("g\xC5t", "GET"));
}

} // namespace
} // namespace quorin::http

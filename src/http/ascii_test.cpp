#include "http/ascii.h"

#include <gtest/gtest.h>

namespace quorin::http {
namespace {

TEST(Ascii, ConvertsOnlyAToZToUpperCase) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool isLower = byte >= 0x61 && byte <= 0x7A;
        const auto c = static_cast<char>(byte); // negative from 0x80 on
        const auto expected = static_cast<char>(isLower ? byte - 0x20 : byte);
        EXPECT_EQ(toUpper(c), expected) << byte;
    }
}

TEST(Ascii, ComparisonIgnoresCaseOfAsciiLetters) {
    EXPECT_TRUE(equalsIgnoreCase("get", "GET"));
    EXPECT_TRUE(equalsIgnoreCase("gEt", "GeT"));
    EXPECT_TRUE(equalsIgnoreCase("GET", "get"));
    EXPECT_TRUE(equalsIgnoreCase("", ""));
    EXPECT_FALSE(equalsIgnoreCase("@[", "`{"));
    EXPECT_FALSE(equalsIgnoreCase("\xE4", "\xC4"));
    EXPECT_FALSE(equalsIgnoreCase("g\xC5t", "GET"));
}

TEST(Ascii, ComparisonCoversWholeTexts) {
    EXPECT_FALSE(equalsIgnoreCase("ge", "GET"));
    EXPECT_FALSE(equalsIgnoreCase("gets", "GET"));
    EXPECT_FALSE(equalsIgnoreCase("", "GET"));
}

} // namespace
} // namespace quorin::http

#include "json/key_order.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

namespace {

using namespace std::string_view_literals;

TEST(KeyOrderTest, ComparesBytesAsUnsigned) {
    constexpr std::array kAscending = {""sv,      "\0"sv,   "\0a"sv,  " "sv,        "A"sv,
                                       "AB"sv,    "Aa"sv,   "a"sv,    "aB"sv,       "a\x7F"sv,
                                       "a\x80"sv, "\x7F"sv, "\x80"sv, "\xC3\xA4"sv, "\xFF"sv};
    for (std::size_t i = 0; i < kAscending.size(); ++i) {
        for (std::size_t j = 0; j < kAscending.size(); ++j) {
            EXPECT_EQ(ravenjson::KeyOrder()(kAscending[i], kAscending[j]), i < j) << i << ' ' << j;
        }
    }
}

} // namespace

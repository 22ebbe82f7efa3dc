#pragma once

#include "json/reader.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace ravenjson::test {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Returns the value of `text`, which must be well-formed.
inline Value parsed(std::string_view text) {
    Value value;
    std::string error;
    EXPECT_TRUE(parse(text, value, error)) << error << ": " << text.substr(0, 80);
    EXPECT_EQ(error, "");
    return value;
}

} // namespace ravenjson::test

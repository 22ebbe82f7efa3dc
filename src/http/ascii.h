#pragma once

#include <algorithm>
#include <string_view>

namespace quorin::http {

// Converts the letters a to z to upper case and returns every other byte unchanged. Unlike
// std::toupper, does not depend on the locale and accepts negative values.
constexpr char toUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Returns true if both texts have the same length and the same bytes, ignoring the case of ASCII
// letters.
constexpr bool equalsIgnoreCase(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return toUpper(a) == toUpper(b); });
}

} // namespace quorin::http

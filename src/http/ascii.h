#pragma once

#include <algorithm>
#include <string_view>

namespace quorin::http {

// Upper case of the letters a to z; every other byte, negative ones included, is itself. The
// locale has no say in what a request means.
constexpr char toUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// Whether text, in upper case, is upperCaseName.
constexpr bool isNamed(std::string_view text, std::string_view upperCaseName) noexcept {
    return std::equal(text.begin(), text.end(), upperCaseName.begin(), upperCaseName.end(),
                      [](char left, char right) { return toUpper(left) == right; });
}

} // namespace quorin::http

#include "json/number_text.h"

#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace ravenjson {
namespace {

// Whether a number no double can hold is too large, rather than too small.
bool isTooLarge(std::string_view number) {
    const std::size_t keyword = number.find_first_of("eE");
    const std::string_view digits = number.substr(0, keyword);
    const auto point = static_cast<std::int64_t>(std::min(digits.find('.'), digits.size()));
    const auto firstDigit = static_cast<std::int64_t>(digits.find_first_of("123456789"));

    std::int64_t exponent = 0;
    if (keyword != std::string_view::npos) {
        std::string_view text = number.substr(keyword + 1);
        if (text.front() == '+') {
            text.remove_prefix(1);
        }
        const auto result = std::from_chars(text.data(), text.data() + text.size(), exponent);
        if (result.ec == std::errc::result_out_of_range) {
            return text.front() != '-'; // no text has digits enough to make up for it
        }
    }
    return exponent > firstDigit - point;
}

} // namespace

std::optional<double> toDouble(std::string_view number) {
    const char* const end = number.data() + number.size();
    double value = 0.0;
    const auto [stop, error] = std::from_chars(number.data(), end, value);
    if (stop != end || error == std::errc::invalid_argument) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        value = isTooLarge(number) ? std::numeric_limits<double>::infinity() : 0.0;
        return number.front() == '-' ? -value : value;
    }
    return value;
}

void appendDouble(double value, std::string& text) {
    constexpr int kDigits = 17;
    std::array<char, 32> buffer; // sign, digits, point, exponent: 24 at most
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::general, kDigits);
    text.append(buffer.data(), result.ptr);
}

void appendInteger(std::int64_t value, std::string& text) {
    std::array<char, 20> buffer; // the lowest of all, sign included
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    text.append(buffer.data(), result.ptr);
}

} // namespace ravenjson

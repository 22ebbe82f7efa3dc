#include "json/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace ravenjson {
namespace {

// Returns whether a number outside the range of double overflows; otherwise it underflows.
bool overflows(std::string_view number) {
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
            return text.front() != '-'; // no number of digits outweighs such an exponent
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
        value = overflows(number) ? std::numeric_limits<double>::infinity() : 0.0;
        return number.front() == '-' ? -value : value;
    }
    return value;
}

void appendDouble(double value, std::string& text) {
    constexpr int kDigits = 17;
    std::array<char, 32> buffer; // at most 24: sign, 17 digits, point, exponent
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::general, kDigits);
    text.append(buffer.data(), result.ptr);
}

void appendInteger(std::int64_t value, std::string& text) {
    std::array<char, 20> buffer; // length of the minimum, with its sign
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    text.append(buffer.data(), result.ptr);
}

} // namespace ravenjson

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Conversion between numbers and text. Independent of the locale: the decimal point is always '.'.
namespace ravenjson {

// Converts [-]digits[.digits][e[+-]digits] to the nearest double. Returns infinity on overflow and
// zero on underflow, both with the sign of the number. Returns nullopt if `number` as a whole does
// not have this form.
[[nodiscard]] std::optional<double> toDouble(std::string_view number);

// Appends `value` as printf does with "%.17g": 17 significant digits, enough to read back the same
// double. `value` must be finite.
void appendDouble(double value, std::string& text);

// Appends `value` in decimal.
void appendInteger(std::int64_t value, std::string& text);

} // namespace ravenjson

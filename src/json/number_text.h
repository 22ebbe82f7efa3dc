#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Numbers to text and back. None of this depends on the locale: the decimal point is '.'.
namespace ravenjson {

// The double nearest to a decimal number: [-]digits[.digits][e[+-]digits]. Beyond the range of
// doubles it is infinite, below it zero, with the sign of the number. Nothing when `number` is not
// such a number from its first byte to its last.
[[nodiscard]] std::optional<double> toDouble(std::string_view number);

// Appends all 17 digits that tell a double from its neighbours, as "%.17g" does. `value` is
// finite.
void appendDouble(double value, std::string& text);

void appendInteger(std::int64_t value, std::string& text);

} // namespace ravenjson

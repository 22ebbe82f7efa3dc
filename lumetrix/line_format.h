#pragma once

#include <spdlog/formatter.h>

#include <memory>
#include <string_view>

namespace lumetrix {

// Pattern of a log line.
inline constexpr std::string_view kLinePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%l\t_th:%t\t_m:Quorin5\tmsg:%v";

// The same pattern with a coloured level, for terminals.
inline constexpr std::string_view kConsolePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%^%l%$\t_th:%t\t_m:Quorin5\tmsg:%v";

// Returns a formatter for `pattern` that escapes the message (%v) with appendEscaped.
std::unique_ptr<spdlog::formatter> makeLineFormatter(std::string_view pattern);

// Appends `text` to `line` with control characters and backslashes escaped: \n, \r, \t, \\, and
// \x followed by two lower-case hexadecimal digits for the other control characters. Bytes above
// 127 are not changed.
void appendEscaped(std::string_view text, spdlog::memory_buf_t& line);

} // namespace lumetrix

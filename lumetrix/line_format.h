#pragma once

#include <spdlog/formatter.h>

#include <memory>
#include <string_view>

namespace lumetrix2 {

// A log line.
inline constexpr std::string_view kLinePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%l\t_th:%t\t_m:Quorin5\tmsg:%v";

// The same line with its level marked for colour, for a console.
inline constexpr std::string_view kConsolePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%^%l%$\t_th:%t\t_m:Quorin5\tmsg:%v";

// A formatter for `pattern` whose %v is the message with its control characters and back-slashes
// escaped (appendEscaped).
std::unique_ptr<spdlog::formatter> makeLineFormatter(std::string_view pattern);

// Appends `text` so that it holds no control character: \n, \r, \t, \\ and \x and two lower-case
// hexadecimal digits for the others. Bytes above 127 stay as they are.
void appendEscaped(std::string_view text, spdlog::memory_buf_t& line);

} // namespace lumetrix2

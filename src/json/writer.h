#pragma once

#include "json/value.h"

#include <cstdint>
#include <string>

namespace ravenjson {

// Bitwise OR of the flags below. Without kPretty the text has no line breaks and no spaces, and
// the other flags have no effect. The default indentation is two spaces, also if both indent flags
// are set.
using WriterOptions = std::uint32_t;

inline constexpr WriterOptions kCompact = 0;
inline constexpr WriterOptions kIndentFourSpaces = 0x01;
inline constexpr WriterOptions kIndentTab = 0x02;
inline constexpr WriterOptions kCrLf = 0x04; // "\r\n" instead of "\n"
inline constexpr WriterOptions kPretty = 0x80;

// Appends `value` as JSON text to `output`. If `value` contains NaN or an infinite double, stops
// there: `output` then ends in "nan", "inf" or "-inf", `error` is set and the result is false. On
// success `error` is unchanged.
//
// A double without a fraction is written without one, so it reads back as an integer; zero is
// always "0.0". Nesting depth is unlimited and takes no stack. The locale has no effect.
[[nodiscard]] bool write(const Value& value, WriterOptions options, std::string& output,
                         std::string& error);

// Returns `value` as JSON text. Does not report a NaN or an infinite double: the text then ends
// there, as with write().
[[nodiscard]] std::string toString(const Value& value, WriterOptions options = kCompact);

} // namespace ravenjson

#pragma once

#include "json/value.h"

#include <cstdint>
#include <string>

namespace ravenjson {

// How a text is laid out: an OR of the flags below, the indents and the line break counting only
// with kPretty. Without it the text has no line breaks and no blanks.
using WriterOptions = std::uint32_t;

inline constexpr WriterOptions kCompact = 0;
inline constexpr WriterOptions kIndentFourSpaces = 0x01; // instead of two
inline constexpr WriterOptions kIndentTab = 0x02;        // instead of two spaces
inline constexpr WriterOptions kCrLf = 0x04;             // "\r\n" instead of "\n"
inline constexpr WriterOptions kPretty = 0x80;

// Appends `value` as text to `output`. Only a double that is infinite or not a number cannot be
// written: the result is then false, `error` says so, and `output` ends with it ("nan", "inf",
// "-inf"). Else `error` stays as it was.
//
// Nesting has no limit and costs no stack. The text does not depend on the locale. A double with
// no fraction is written without one and so reads back as an integer; zero is always "0.0".
[[nodiscard]] bool write(const Value& value, WriterOptions options, std::string& output,
                         std::string& error);

// `value` as text, or as much of it as could be written: for values that hold no infinite doubles
// and no NaN, and for callers who do not mind.
[[nodiscard]] std::string toString(const Value& value, WriterOptions options = kCompact);

} // namespace ravenjson

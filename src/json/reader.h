#pragma once

#include "json/value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ravenjson {

// Event handler for parseValue(). Events arrive in document order. Each function returns whether
// to continue; false stops parsing with an error.
//
// In `text`, escapes are resolved. It is valid only during the call.
class Handler {
public:
    virtual ~Handler() = default;

    virtual bool null() = 0;
    virtual bool boolean(bool value) = 0;
    virtual bool integer(std::int64_t value) = 0;
    virtual bool floating(double value) = 0;
    virtual bool string(std::string_view text) = 0;
    virtual bool startArray() = 0;
    virtual bool endArray() = 0;
    virtual bool startObject() = 0;
    // Member name; the events of the member's value follow.
    virtual bool key(std::string_view text) = 0;
    virtual bool endObject() = 0;
};

// The three functions below share one reader and follow the same rules:
//
// - Strings are byte strings: control characters and bytes of 0x80 and above are copied unchanged,
//   and UTF-8 is not validated.
// - A number without fraction and exponent is an integer if it passes the reader's bound check,
//   otherwise a double. Some numbers of 19 or more digits pass the check although they need more
//   than 64 bits; they wrap modulo 2^64.
// - A double that overflows is infinite; one that underflows is zero.
// - Nesting depth is unlimited. Each open container takes one byte of heap memory, besides the
//   tree itself, and no stack.
// - The locale has no effect.
//
// Each returns false on error and sets `error` to a fixed English message; on success `error` is
// unchanged. All may be called from any thread.

// Parses `text`, one value with optional whitespace around it, into a tree. If an object contains a
// key more than once, the last value wins. On error `value` is unchanged. `text` may point into
// `value`.
[[nodiscard]] bool parse(std::string_view text, Value& value, std::string& error);

// Parses one value, with optional whitespace before it, from [position, end) and reports it to
// `handler`. Moves `position` to the end of the value or, on error, to where parsing stopped. Does
// not examine what follows the value.
[[nodiscard]] bool parseValue(const char*& position, const char* end, Handler& handler,
                              std::string& error);

// Like parseValue() without a handler: validates one value and skips it.
[[nodiscard]] bool skipValue(const char*& position, const char* end, std::string& error);

} // namespace ravenjson

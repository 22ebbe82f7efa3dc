#pragma once

#include "json/value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ravenjson {

// Is told what a text holds, piece by piece, in the order of the text. Each function returns
// whether to go on; false ends the reading with an error.
//
// A text handed over has its escapes resolved, and is gone when the function returns.
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
    // The name of a member; its value follows.
    virtual bool key(std::string_view text) = 0;
    virtual bool endObject() = 0;
};

// The three ways to read. All go by the same rules, and none depends on the locale:
//
// - Strings are bytes: control characters and anything from 0x80 up are taken as they stand.
// - A number without fraction and exponent is an integer while it stays within the reader's
//   bound, and a double beyond. The bound lets some numbers of 19 digits and more through that
//   need more than 64 bits; these wrap around.
// - A double too large for its type is infinite, one too small is zero.
// - Nesting has no limit; it costs a byte of memory a level (a tree: the tree), and never stack.
//
// On an error the result is false and `error` receives a fixed English text; else `error` stays
// as it was.

// Reads the whole text into a tree; whitespace may stand around the value. Of a name that occurs
// twice in one object the later value is kept. `value` changes on success only, and `text` may be
// a part of it.
[[nodiscard]] bool parse(std::string_view text, Value& value, std::string& error);

// Reads one value from [position, end), with whitespace before it, and tells `handler`. The
// position is left behind the value, or on an error where the reading ended. What follows the
// value is not looked at.
[[nodiscard]] bool parseValue(const char*& position, const char* end, Handler& handler,
                              std::string& error);

// Like parseValue(), and tells nobody: checks one value and skips it.
[[nodiscard]] bool skipValue(const char*& position, const char* end, std::string& error);

} // namespace ravenjson

#pragma once

#include "json/byte_scan.h"
#include "json/number_text.h"
#include "json/unicode.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ravenjson {

// Error messages. They contain no position.
namespace message {
inline constexpr const char* kUnexpectedCharacter = "Unexpected character exists while parsing.";
inline constexpr const char* kInvalidBoolean = "Invalid boolean type string exists.";
inline constexpr const char* kInvalidNull = "Invalid null type string exists.";
inline constexpr const char* kUnexpectedZero =
    "Unexpected '0' character is found while parsing number.";
inline constexpr const char* kMissingDigit = "Digit is not found while parsing number.";
inline constexpr const char* kMissingFractionDigit =
    "Digit is not found after the decimal point while parsing number.";
inline constexpr const char* kMissingExponentDigit =
    "Digit is not found after exponent keyword while parsing number.";
inline constexpr const char* kInvalidFloatingPoint = "Failed to parse floating point.";
inline constexpr const char* kUnexpectedEscape =
    "Unexpected escape character is found while parsing string.";
inline constexpr const char* kInvalidHex =
    "Invalid unicode hex string is found while parsing string.";
inline constexpr const char* kInvalidSurrogates =
    "Invalid unicode surrogate pair is found while parsing string.";
inline constexpr const char* kMissingStringEnd =
    "Expected string ending character '\"' is not found.";
inline constexpr const char* kUnexpectedArrayComma = "Unexpected comma exists while parsing array.";
inline constexpr const char* kUnexpectedArrayText = "Unexpected string exists while parsing array.";
inline constexpr const char* kUnexpectedObjectComma =
    "Unexpected comma exists while parsing object.";
inline constexpr const char* kUnexpectedObjectText =
    "Unexpected string exists while parsing object.";
inline constexpr const char* kHandlerCancelled = "SAX handler cancels parsing.";
inline constexpr const char* kTrailingText = "Gabage string exists after json string.";
} // namespace message

constexpr bool isWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Single-pass JSON reader. Checks the syntax and reports each value to `Sink`, a class with the
// functions of Handler. A string with escapes is passed to the sink as an rvalue of `Sink::Text`,
// any other string as a view of the input.
//
// Not recursive: stack use does not depend on the nesting depth.
template<class Sink>
class TextReader {
public:
    TextReader(const char* begin, const char* end, Sink& sink)
        : position_(begin), end_(end), sink_(sink) {}

    [[nodiscard]] const char* position() const { return position_; }
    // The message of the error that made readValue() or readEnd() return false.
    [[nodiscard]] const char* error() const { return error_; }

    // Reads one value, including nested values. Returns false on error.
    [[nodiscard]] bool readValue() {
        Next next = Next::Value;
        while (next == Next::Value) {
            next = readValueOrOpening();
            while (next == Next::Delimiter) {
                next = readDelimiter();
            }
            if (next == Next::Key) {
                next = readKey();
            }
        }
        return next == Next::End;
    }

    // Skips whitespace. Returns false if anything else precedes the end.
    [[nodiscard]] bool readEnd() {
        skipWhitespace();
        return position_ == end_ || reportError(message::kTrailingText);
    }

private:
    // What must come next.
    enum class Next {
        Value,
        Key,
        Delimiter, // after a complete value: a comma or a closing bracket
        End,       // nothing: the outermost value is complete
        Error,
    };

    static constexpr std::size_t kTypicalTail = 32; // bytes of a string after its first escape

    bool reportError(const char* message) {
        error_ = message;
        return false;
    }

    Next fail(const char* message) {
        error_ = message;
        return Next::Error;
    }

    // What comes next after an event; `accepted` is the return value of the sink.
    Next afterEvent(bool accepted) {
        return accepted ? Next::Delimiter : fail(message::kHandlerCancelled);
    }

    // Returns the next byte, or NUL at the end; no caller accepts a NUL byte.
    [[nodiscard]] char peek() const { return position_ != end_ ? *position_ : '\0'; }

    void skipWhitespace() {
        while (isWhitespace(peek())) {
            ++position_;
        }
    }

    Next readValueOrOpening() {
        skipWhitespace();
        switch (peek()) {
        case '"':
            return readString(
                [this](auto&& text) { return sink_.string(std::forward<decltype(text)>(text)); });
        case '[':
            return openArray();
        case '{':
            return openObject();
        case 't':
            return readLiteral("true", message::kInvalidBoolean,
                               [this] { return sink_.boolean(true); });
        case 'f':
            return readLiteral("false", message::kInvalidBoolean,
                               [this] { return sink_.boolean(false); });
        case 'n':
            return readLiteral("null", message::kInvalidNull, [this] { return sink_.null(); });
        case '-':
        case '0':
        case '1':
        case '2':
        case '3':
        case '4':
        case '5':
        case '6':
        case '7':
        case '8':
        case '9':
            return readNumber();
        default:
            return fail(message::kUnexpectedCharacter);
        }
    }

    Next readLiteral(std::string_view literal, const char* mismatch, auto&& emit) {
        for (const char c : literal) {
            if (peek() != c) {
                return fail(mismatch);
            }
            ++position_;
        }
        return afterEvent(emit());
    }

    Next openArray() {
        ++position_;
        if (!sink_.startArray()) {
            return fail(message::kHandlerCancelled);
        }
        closingBrackets_ += ']';
        skipWhitespace();
        return peek() == ']' ? Next::Delimiter : Next::Value;
    }

    Next openObject() {
        ++position_;
        if (!sink_.startObject()) {
            return fail(message::kHandlerCancelled);
        }
        closingBrackets_ += '}';
        skipWhitespace();
        return peek() == '}' ? Next::Delimiter : Next::Key;
    }

    Next readKey() {
        if (peek() != '"') {
            return fail(message::kMissingStringEnd); // this case has no message of its own
        }
        const Next next = readString(
            [this](auto&& text) { return sink_.key(std::forward<decltype(text)>(text)); });
        if (next == Next::Error) {
            return next;
        }
        skipWhitespace();
        if (peek() != ':') {
            return fail(message::kUnexpectedObjectText);
        }
        ++position_;
        return Next::Value;
    }

    Next readDelimiter() {
        if (closingBrackets_.empty()) {
            return Next::End;
        }
        skipWhitespace();
        return closingBrackets_.back() == ']' ? readArrayDelimiter() : readObjectDelimiter();
    }

    Next readArrayDelimiter() {
        switch (peek()) {
        case ',':
            ++position_;
            skipWhitespace();
            return peek() == ']' ? fail(message::kUnexpectedArrayComma) : Next::Value;
        case ']':
            ++position_;
            closingBrackets_.pop_back();
            return afterEvent(sink_.endArray());
        default:
            return fail(message::kUnexpectedArrayText);
        }
    }

    Next readObjectDelimiter() {
        switch (peek()) {
        case ',':
            ++position_;
            skipWhitespace();
            return peek() == '}' ? fail(message::kUnexpectedObjectComma) : Next::Key;
        case '}':
            ++position_;
            closingBrackets_.pop_back();
            return afterEvent(sink_.endObject());
        default:
            return fail(message::kUnexpectedObjectText);
        }
    }

    Next readNumber() {
        const char* const begin = position_;
        const bool negative = peek() == '-';
        if (negative) {
            ++position_;
        }
        if (!isDigit(peek())) {
            return fail(message::kMissingDigit);
        }
        if (peek() == '0' && end_ - position_ > 1 && isDigit(position_[1])) {
            return fail(message::kUnexpectedZero);
        }

        bool isDouble = false;
        const std::uint64_t magnitude = readMagnitude(isDouble);
        if (peek() == '.') {
            ++position_;
            isDouble = true;
            if (!skipDigits()) {
                return fail(message::kMissingFractionDigit);
            }
        }
        if (peek() == 'e' || peek() == 'E') {
            ++position_;
            isDouble = true;
            if (peek() == '+' || peek() == '-') {
                ++position_;
            }
            if (!skipDigits()) {
                return fail(message::kMissingExponentDigit);
            }
        }

        if (!isDouble) {
            return afterEvent(
                sink_.integer(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude)));
        }
        const std::optional<double> value = toDouble({begin, position_});
        return value ? afterEvent(sink_.floating(*value)) : fail(message::kInvalidFloatingPoint);
    }

    // Reads the digits of the integer part and returns their value. Sets `tooLarge` if they fail
    // the bound check; the remaining digits are then skipped.
    std::uint64_t readMagnitude(bool& tooLarge) {
        // At or above the bound, an 8 or 9 is too large; any other digit is added and may wrap.
        // The sum is unsigned because signed overflow is undefined, but the comparison is signed:
        // a sum that has wrapped to a negative value is below the bound again.
        constexpr std::int64_t kBound = 922337203685477580;
        std::uint64_t magnitude = 0;
        for (; isDigit(peek()); ++position_) {
            const auto digit = static_cast<std::uint64_t>(*position_ - '0');
            if (static_cast<std::int64_t>(magnitude) >= kBound && digit > 7) {
                tooLarge = true;
                skipDigits();
                break;
            }
            magnitude = magnitude * 10 + digit;
        }
        return magnitude;
    }

    // Returns whether there was at least one digit.
    bool skipDigits() {
        const char* const begin = position_;
        while (isDigit(peek())) {
            ++position_;
        }
        return position_ != begin;
    }

    // Passes the string to `emit`, as a view if it has no escapes, else as an rvalue.
    Next readString(auto&& emit) {
        ++position_;
        const char* const begin = position_;
        skipPlainText();
        if (peek() == '"') {
            const std::string_view text(begin, position_);
            ++position_;
            return afterEvent(emit(text));
        }
        typename Sink::Text text;
        return readEscapedString(begin, text) ? afterEvent(emit(std::move(text))) : Next::Error;
    }

    // Reads the rest of a string that starts at `begin`; the position is at its first escape.
    bool readEscapedString(const char* begin, typename Sink::Text& text) {
        text.reserve(2 * static_cast<std::size_t>(position_ - begin) + kTypicalTail);
        text.append(begin, position_);
        while (position_ != end_) {
            const char c = *position_;
            ++position_;
            if (c == '"') {
                return true;
            }
            if (!readEscape(text)) {
                return false;
            }
            const char* const plain = position_;
            skipPlainText();
            text.append(plain, position_);
        }
        return reportError(message::kMissingStringEnd);
    }

    // Skips to the next double quote or backslash, or to the end.
    void skipPlainText() {
        position_ = bytescan::find(
            position_, end_,
            [](bytescan::Block block) { return block.equalTo('"') | block.equalTo('\\'); },
            [](char byte) { return byte == '"' || byte == '\\'; });
    }

    // Reads the rest of an escape, after the backslash.
    bool readEscape(typename Sink::Text& text) {
        if (position_ == end_) {
            return reportError(message::kMissingStringEnd);
        }
        const char c = *position_;
        ++position_;
        switch (c) {
        case '"':
        case '\\':
        case '/':
            text += c;
            return true;
        case 'b':
            text += '\b';
            return true;
        case 'f':
            text += '\f';
            return true;
        case 'n':
            text += '\n';
            return true;
        case 'r':
            text += '\r';
            return true;
        case 't':
            text += '\t';
            return true;
        case 'u':
            return readCodePoint(text);
        default:
            return reportError(message::kUnexpectedEscape);
        }
    }

    // Reads one code unit or a surrogate pair, after the first "\u".
    bool readCodePoint(typename Sink::Text& text) {
        const std::optional<std::uint32_t> unit = readCodeUnit();
        if (!unit) {
            return reportError(message::kInvalidHex);
        }
        if (!unicode::isSurrogate(*unit)) {
            unicode::appendUtf8(*unit, text);
            return true;
        }
        if (unicode::isHighSurrogate(*unit) && end_ - position_ >= 2 && position_[0] == '\\' &&
            position_[1] == 'u') {
            position_ += 2;
            const std::optional<std::uint32_t> second = readCodeUnit();
            if (second && unicode::isLowSurrogate(*second)) {
                unicode::appendUtf8(unicode::combine(*unit, *second), text);
                return true;
            }
        }
        return reportError(message::kInvalidSurrogates);
    }

    // Reads four hexadecimal digits. Returns nullopt if there are fewer.
    std::optional<std::uint32_t> readCodeUnit() {
        std::uint32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = unicode::hexDigitValue(peek());
            if (digit < 0) {
                return std::nullopt;
            }
            unit = unit << 4 | static_cast<std::uint32_t>(digit);
            ++position_;
        }
        return unit;
    }

    const char* position_;
    const char* const end_;
    Sink& sink_;
    std::string closingBrackets_; // of the open containers, innermost last
    const char* error_ = nullptr;
};

} // namespace ravenjson

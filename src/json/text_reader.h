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

// What an error is called. None says where it is.
namespace message {
inline constexpr const char* kUnexpectedCharacter = "Unexpected character exists while parsing.";
inline constexpr const char* kInvalidBoolean = "Invalid boolean type string exists.";
inline constexpr const char* kInvalidNull = "Invalid null type string exists.";
inline constexpr const char* kUnexpectedZero =
    "Unexpected '0' character is found while parsing number.";
inline constexpr const char* kNoDigit = "Digit is not found while parsing number.";
inline constexpr const char* kNoFractionDigit =
    "Digit is not found after the decimal point while parsing number.";
inline constexpr const char* kNoExponentDigit =
    "Digit is not found after exponent keyword while parsing number.";
inline constexpr const char* kInvalidFloatingPoint = "Failed to parse floating point.";
inline constexpr const char* kUnexpectedEscape =
    "Unexpected escape character is found while parsing string.";
inline constexpr const char* kInvalidHex =
    "Invalid unicode hex string is found while parsing string.";
inline constexpr const char* kInvalidSurrogates =
    "Invalid unicode surrogate pair is found while parsing string.";
inline constexpr const char* kNoStringEnd = "Expected string ending character '\"' is not found.";
inline constexpr const char* kUnexpectedArrayComma = "Unexpected comma exists while parsing array.";
inline constexpr const char* kUnexpectedArrayText = "Unexpected string exists while parsing array.";
inline constexpr const char* kUnexpectedObjectComma =
    "Unexpected comma exists while parsing object.";
inline constexpr const char* kUnexpectedObjectText =
    "Unexpected string exists while parsing object.";
inline constexpr const char* kHandlerCancels = "SAX handler cancels parsing.";
inline constexpr const char* kGarbage = "Gabage string exists after json string.";
} // namespace message

constexpr bool isWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads a text once, from front to back, and tells a sink what it holds. What comes of it is the
// sink's affair; the rules of the language are all here.
template<class Sink>
class Reader {
public:
    Reader(const char* begin, const char* end, Sink& sink)
        : position_(begin), end_(end), sink_(sink) {}

    [[nodiscard]] const char* position() const { return position_; }
    // The text for the error that made a function return false.
    [[nodiscard]] const char* error() const { return error_; }

    // One value with all that is in it.
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

    // Nothing but whitespace up to the end.
    [[nodiscard]] bool readEnd() {
        skipWhitespace();
        return position_ == end_ || refuse(message::kGarbage);
    }

private:
    // What the text must go on with.
    enum class Next {
        Value,
        Key,
        Delimiter, // what stands behind a complete value: a comma or a closing bracket
        End,       // nothing, the outermost value is complete
        Error,
    };

    static constexpr std::size_t kUsualRest = 32; // of a string behind its first escape

    bool refuse(const char* message) {
        error_ = message;
        return false;
    }

    Next fail(const char* message) {
        error_ = message;
        return Next::Error;
    }

    // A value is complete when the sink, told of it, says so too.
    Next completeIf(bool accepted) {
        return accepted ? Next::Delimiter : fail(message::kHandlerCancels);
    }

    // The next byte. The end reads as NUL, which is an error like the end wherever it is asked.
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

    Next readLiteral(std::string_view literal, const char* mismatch, auto&& tell) {
        for (const char c : literal) {
            if (peek() != c) {
                return fail(mismatch);
            }
            ++position_;
        }
        return completeIf(tell());
    }

    Next openArray() {
        ++position_;
        if (!sink_.startArray()) {
            return fail(message::kHandlerCancels);
        }
        closers_ += ']';
        skipWhitespace();
        return peek() == ']' ? Next::Delimiter : Next::Value;
    }

    Next openObject() {
        ++position_;
        if (!sink_.startObject()) {
            return fail(message::kHandlerCancels);
        }
        closers_ += '}';
        skipWhitespace();
        return peek() == '}' ? Next::Delimiter : Next::Key;
    }

    Next readKey() {
        if (peek() != '"') {
            return fail(message::kNoStringEnd); // a string not begun does not end either
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
        if (closers_.empty()) {
            return Next::End;
        }
        skipWhitespace();
        return closers_.back() == ']' ? readArrayDelimiter() : readObjectDelimiter();
    }

    Next readArrayDelimiter() {
        switch (peek()) {
        case ',':
            ++position_;
            skipWhitespace();
            return peek() == ']' ? fail(message::kUnexpectedArrayComma) : Next::Value;
        case ']':
            ++position_;
            closers_.pop_back();
            return completeIf(sink_.endArray());
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
            closers_.pop_back();
            return completeIf(sink_.endObject());
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
            return fail(message::kNoDigit);
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
                return fail(message::kNoFractionDigit);
            }
        }
        if (peek() == 'e' || peek() == 'E') {
            ++position_;
            isDouble = true;
            if (peek() == '+' || peek() == '-') {
                ++position_;
            }
            if (!skipDigits()) {
                return fail(message::kNoExponentDigit);
            }
        }

        if (!isDouble) {
            return completeIf(
                sink_.integer(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude)));
        }
        const std::optional<double> value = toDouble({begin, position_});
        return value ? completeIf(sink_.floating(*value)) : fail(message::kInvalidFloatingPoint);
    }

    // The digits before the point, as far as an integer takes them. One that is too large has
    // all its digits skipped.
    std::uint64_t readMagnitude(bool& tooLarge) {
        // An 8 or 9 behind the bound is too much. Other digits go on and may wrap around, so the
        // sum is unsigned; but it is held against the bound with the sign it then has.
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

    // Whether there was one at least.
    bool skipDigits() {
        const char* const begin = position_;
        while (isDigit(peek())) {
            ++position_;
        }
        return position_ != begin;
    }

    // Tells of a text without escapes where it stands, and of one with escapes as a text of its
    // own, to be moved from.
    Next readString(auto&& tell) {
        ++position_;
        const char* const begin = position_;
        skipPlainText();
        if (peek() == '"') {
            const std::string_view text(begin, position_);
            ++position_;
            return completeIf(tell(text));
        }
        typename Sink::Text text;
        return readEscapedString(begin, text) ? completeIf(tell(std::move(text))) : Next::Error;
    }

    // A string from `begin` on, of which the position is at the first escape.
    bool readEscapedString(const char* begin, typename Sink::Text& text) {
        text.reserve(2 * static_cast<std::size_t>(position_ - begin) + kUsualRest);
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
        return refuse(message::kNoStringEnd);
    }

    // Up to a double quote, a backslash or the end.
    void skipPlainText() {
        position_ = bytescan::find(
            position_, end_,
            [](bytescan::Block block) { return block.equalTo('"') | block.equalTo('\\'); },
            [](char byte) { return byte == '"' || byte == '\\'; });
    }

    // What follows a backslash.
    bool readEscape(typename Sink::Text& text) {
        if (position_ == end_) {
            return refuse(message::kNoStringEnd);
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
            return refuse(message::kUnexpectedEscape);
        }
    }

    // What follows "\u": one code unit, or a pair of surrogates.
    bool readCodePoint(typename Sink::Text& text) {
        const std::optional<std::uint32_t> unit = readCodeUnit();
        if (!unit) {
            return refuse(message::kInvalidHex);
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
        return refuse(message::kInvalidSurrogates);
    }

    // Four hexadecimal digits.
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
    std::string closers_; // the brackets that close what is open, the innermost last
    const char* error_ = nullptr;
};

} // namespace ravenjson

#include "json/reader.h"

#include "json/byte_scan.h"
#include "json/number_text.h"
#include "json/tree_builder.h"

#include <optional>
#include <utility>
#include <vector>

namespace ravenjson {
namespace {

constexpr const char* kUnexpectedCharacter = "Unexpected character exists while parsing.";
constexpr const char* kInvalidBoolean = "Invalid boolean type string exists.";
constexpr const char* kInvalidNull = "Invalid null type string exists.";
constexpr const char* kUnexpectedZero = "Unexpected '0' character is found while parsing number.";
constexpr const char* kNoDigit = "Digit is not found while parsing number.";
constexpr const char* kNoFractionDigit =
    "Digit is not found after the decimal point while parsing number.";
constexpr const char* kNoExponentDigit =
    "Digit is not found after exponent keyword while parsing number.";
constexpr const char* kInvalidFloatingPoint = "Failed to parse floating point.";
constexpr const char* kUnexpectedEscape =
    "Unexpected escape character is found while parsing string.";
constexpr const char* kInvalidHex = "Invalid unicode hex string is found while parsing string.";
constexpr const char* kInvalidSurrogates =
    "Invalid unicode surrogate pair is found while parsing string.";
constexpr const char* kNoStringEnd = "Expected string ending character '\"' is not found.";
constexpr const char* kUnexpectedArrayComma = "Unexpected comma exists while parsing array.";
constexpr const char* kUnexpectedArrayText = "Unexpected string exists while parsing array.";
constexpr const char* kUnexpectedObjectComma = "Unexpected comma exists while parsing object.";
constexpr const char* kUnexpectedObjectText = "Unexpected string exists while parsing object.";
constexpr const char* kHandlerCancels = "SAX handler cancels parsing.";
constexpr const char* kGarbage = "Gabage string exists after json string.";

constexpr bool isWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr int hexDigitValue(char c) {
    if (isDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

constexpr bool isSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

constexpr bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void appendUtf8(std::uint32_t codePoint, std::string& text) {
    const auto append = [&text](std::uint32_t byte) { text += static_cast<char>(byte); };
    const auto appendContinuation = [&](int shift) {
        append(0x80 | ((codePoint >> shift) & 0x3F));
    };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xC0 | (codePoint >> 6));
        appendContinuation(0);
    } else if (codePoint < 0x10000) {
        append(0xE0 | (codePoint >> 12));
        appendContinuation(6);
        appendContinuation(0);
    } else {
        append(0xF0 | (codePoint >> 18));
        appendContinuation(12);
        appendContinuation(6);
        appendContinuation(0);
    }
}

/// Hands the events on to a handler from outside.
class HandlerSink {
public:
    static constexpr bool kTakesTexts = true;

    explicit HandlerSink(Handler& handler) : handler_(handler) {}

    bool null() { return handler_.null(); }
    bool boolean(bool value) { return handler_.boolean(value); }
    bool integer(std::int64_t value) { return handler_.integer(value); }
    bool floating(double value) { return handler_.floating(value); }
    bool string(std::string_view text) { return handler_.string(text); }
    bool startArray() { return handler_.startArray(); }
    bool endArray() { return handler_.endArray(); }
    bool startObject() { return handler_.startObject(); }
    bool key(std::string_view text) { return handler_.key(text); }
    bool endObject() { return handler_.endObject(); }

private:
    Handler& handler_;
};

/// Tells nobody.
class NoSink {
public:
    static constexpr bool kTakesTexts = false;

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool integer(std::int64_t) { return true; }
    bool floating(double) { return true; }
    bool string(std::string_view) { return true; }
    bool startArray() { return true; }
    bool endArray() { return true; }
    bool startObject() { return true; }
    bool key(std::string_view) { return true; }
    bool endObject() { return true; }
};

/// Reads a text once, from front to back, and tells a sink what it holds. What comes of it is the
/// sink's affair; the rules of the language are all here.
template<class Sink>
class Reader {
public:
    Reader(const char* begin, const char* end, Sink& sink)
        : position_(begin), end_(end), sink_(sink) {}

    [[nodiscard]] const char* position() const { return position_; }
    /// The text for the error that made a function return false.
    [[nodiscard]] const char* error() const { return error_; }

    /// One value with all that is in it.
    [[nodiscard]] bool readValue() {
        Next next = Next::Value;
        while (next == Next::Value || next == Next::Delimiter) {
            next = next == Next::Value ? readValueOrOpening() : readDelimiter();
        }
        return next == Next::End;
    }

    /// Nothing but whitespace up to the end.
    [[nodiscard]] bool readEnd() {
        skipWhitespace();
        return position_ == end_ || fail(kGarbage) == Next::End;
    }

private:
    /// What the text must go on with.
    enum class Next {
        Value,
        Delimiter, ///< what stands behind a complete value: a comma or a closing bracket
        End,       ///< nothing, the outermost value is complete
        Error,
    };

    Next fail(const char* message) {
        error_ = message;
        return Next::Error;
    }

    /// A value is complete when the sink, told of it, says so too.
    Next completeIf(bool accepted) { return accepted ? Next::Delimiter : fail(kHandlerCancels); }

    /// The next byte. The end reads as NUL, which is an error like the end wherever it is asked.
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
            return readLiteral("true", kInvalidBoolean) ? completeIf(sink_.boolean(true))
                                                        : Next::Error;
        case 'f':
            return readLiteral("false", kInvalidBoolean) ? completeIf(sink_.boolean(false))
                                                         : Next::Error;
        case 'n':
            return readLiteral("null", kInvalidNull) ? completeIf(sink_.null()) : Next::Error;
        default:
            if (peek() == '-' || isDigit(peek())) {
                return readNumber();
            }
            return fail(kUnexpectedCharacter);
        }
    }

    bool readLiteral(std::string_view literal, const char* message) {
        for (const char c : literal) {
            if (peek() != c) {
                fail(message);
                return false;
            }
            ++position_;
        }
        return true;
    }

    Next openArray() {
        ++position_;
        if (!sink_.startArray()) {
            return fail(kHandlerCancels);
        }
        closers_ += ']';
        skipWhitespace();
        return peek() == ']' ? Next::Delimiter : Next::Value;
    }

    Next openObject() {
        ++position_;
        if (!sink_.startObject()) {
            return fail(kHandlerCancels);
        }
        closers_ += '}';
        skipWhitespace();
        return peek() == '}' ? Next::Delimiter : readKey();
    }

    Next readKey() {
        if (peek() != '"') {
            return fail(kNoStringEnd);
        }
        const Next next = readString(
            [this](auto&& text) { return sink_.key(std::forward<decltype(text)>(text)); });
        if (next == Next::Error) {
            return next;
        }
        skipWhitespace();
        if (peek() != ':') {
            return fail(kUnexpectedObjectText);
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
            return peek() == ']' ? fail(kUnexpectedArrayComma) : Next::Value;
        case ']':
            ++position_;
            closers_.pop_back();
            return completeIf(sink_.endArray());
        default:
            return fail(kUnexpectedArrayText);
        }
    }

    Next readObjectDelimiter() {
        switch (peek()) {
        case ',':
            ++position_;
            skipWhitespace();
            return peek() == '}' ? fail(kUnexpectedObjectComma) : readKey();
        case '}':
            ++position_;
            closers_.pop_back();
            return completeIf(sink_.endObject());
        default:
            return fail(kUnexpectedObjectText);
        }
    }

    Next readNumber() {
        const char* const begin = position_;
        const bool negative = peek() == '-';
        if (negative) {
            ++position_;
        }
        if (!isDigit(peek())) {
            return fail(kNoDigit);
        }
        if (peek() == '0' && end_ - position_ > 1 && isDigit(position_[1])) {
            return fail(kUnexpectedZero);
        }

        // The bound is asked with the sign a wrapped magnitude has; the sums themselves are
        // unsigned, where wrapping is defined.
        constexpr std::int64_t kBound = 922337203685477580;
        std::uint64_t magnitude = 0;
        bool isDouble = false;
        for (; isDigit(peek()); ++position_) {
            const auto digit = static_cast<std::uint64_t>(*position_ - '0');
            isDouble = isDouble || (static_cast<std::int64_t>(magnitude) >= kBound && digit > 7);
            if (!isDouble) {
                magnitude = magnitude * 10 + digit;
            }
        }
        if (peek() == '.') {
            ++position_;
            isDouble = true;
            if (!skipDigits()) {
                return fail(kNoFractionDigit);
            }
        }
        if (peek() == 'e' || peek() == 'E') {
            ++position_;
            isDouble = true;
            if (peek() == '+' || peek() == '-') {
                ++position_;
            }
            if (!skipDigits()) {
                return fail(kNoExponentDigit);
            }
        }

        if (!isDouble) {
            return completeIf(
                sink_.integer(static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude)));
        }
        const std::optional<double> value = toDouble({begin, position_});
        return value ? completeIf(sink_.floating(*value)) : fail(kInvalidFloatingPoint);
    }

    /// Whether there was one at least.
    bool skipDigits() {
        const char* const begin = position_;
        while (isDigit(peek())) {
            ++position_;
        }
        return position_ != begin;
    }

    /// Tells the sink of a text without escapes where it stands, and of one with escapes as a
    /// string of its own.
    Next readString(auto&& tell) {
        ++position_;
        const char* const begin = position_;
        skipPlainText();
        if (peek() == '"') {
            const std::string_view text(begin, position_);
            ++position_;
            return completeIf(tell(text));
        }

        std::string text;
        append(text, begin, position_);
        while (position_ != end_) {
            const char c = *position_;
            ++position_;
            if (c == '"') {
                return completeIf(tell(std::move(text)));
            }
            if (!readEscape(text)) {
                return Next::Error;
            }
            const char* const plain = position_;
            skipPlainText();
            append(text, plain, position_);
        }
        return fail(kNoStringEnd);
    }

    static void append(std::string& text, const char* begin, const char* end) {
        if constexpr (Sink::kTakesTexts) {
            text.append(begin, end);
        }
    }

    /// Up to a double quote, a backslash or the end.
    void skipPlainText() {
        position_ = bytescan::find(
            position_, end_,
            [](std::uint64_t bytes) {
                return bytescan::equal(bytes, '"') | bytescan::equal(bytes, '\\');
            },
            [](std::uint8_t byte) { return byte == '"' || byte == '\\'; });
    }

    /// What follows a backslash.
    bool readEscape(std::string& text) {
        if (position_ == end_) {
            fail(kNoStringEnd);
            return false;
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
            fail(kUnexpectedEscape);
            return false;
        }
    }

    /// What follows "\u": one code unit, or a pair of surrogates.
    bool readCodePoint(std::string& text) {
        const std::optional<std::uint32_t> unit = readCodeUnit();
        if (!unit) {
            fail(kInvalidHex);
            return false;
        }
        if (!isSurrogate(*unit)) {
            appendUtf8(*unit, text);
            return true;
        }
        if (isHighSurrogate(*unit) && end_ - position_ >= 2 && position_[0] == '\\' &&
            position_[1] == 'u') {
            position_ += 2;
            const std::optional<std::uint32_t> second = readCodeUnit();
            if (second && isLowSurrogate(*second)) {
                appendUtf8(0x10000 + ((*unit - 0xD800) << 10) + (*second - 0xDC00), text);
                return true;
            }
        }
        fail(kInvalidSurrogates);
        return false;
    }

    /// Four hexadecimal digits.
    std::optional<std::uint32_t> readCodeUnit() {
        std::uint32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hexDigitValue(peek());
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
    std::string closers_; ///< the brackets that close what is open, the innermost last
    const char* error_ = nullptr;
};

template<class Sink>
bool readOne(const char*& position, const char* end, Sink& sink, std::string& error) {
    Reader<Sink> reader(position, end, sink);
    const bool ok = reader.readValue();
    position = reader.position();
    if (!ok) {
        error = reader.error();
    }
    return ok;
}

} // namespace

bool parse(std::string_view text, Value& value, std::string& error) {
    TreeBuilder builder;
    Arena arena(text.size()*4);
    Reader<TreeBuilder> reader(text.data(), text.data() + text.size(), builder);
    if (!reader.readValue() || !reader.readEnd()) {
        error = reader.error();
        return false;
    }
    value = builder.take();
    return true;
}

bool parseValue(const char*& position, const char* end, Handler& handler, std::string& error) {
    HandlerSink sink(handler);
    return readOne(position, end, sink, error);
}

bool skipValue(const char*& position, const char* end, std::string& error) {
    NoSink sink;
    return readOne(position, end, sink, error);
}

} // namespace ravenjson

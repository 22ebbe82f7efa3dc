#pragma once

#include <cstdint>

// Conversion of UTF-16 code units, as used in escapes, to UTF-8.
namespace ravenjson::unicode {

// Returns the value of a hexadecimal digit, or -1 if `c` is not one.
constexpr int hexDigitValue(char c) {
    if (c >= '0' && c <= '9') {
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

// Returns the code point of a surrogate pair.
constexpr std::uint32_t combine(std::uint32_t high, std::uint32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Appends `codePoint` as UTF-8 bytes, each with operator +=.
template<class Text>
void appendUtf8(std::uint32_t codePoint, Text& text) {
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

} // namespace ravenjson::unicode

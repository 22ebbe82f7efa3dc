#pragma once

#include <cstdint>

// Code units of UTF-16, as escapes name them, and UTF-8, as texts hold it.
namespace ravenjson::unicode {

// The value of a hexadecimal digit, or -1.
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

// The code point of two surrogates.
constexpr std::uint32_t combine(std::uint32_t high, std::uint32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Appends a code point to a text by its operator +=.
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

#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// Searching text eight bytes at a time. A test of eight bytes gives a word whose lowest set bit
/// is the top bit of the first byte that passes; the bits above it mean nothing.
namespace ravenjson::bytescan {

static_assert(std::endian::native == std::endian::little, "the first byte must be the lowest");

inline constexpr std::uint64_t kLowBits = 0x0101010101010101;
inline constexpr std::uint64_t kTopBits = 0x8080808080808080;

/// Tests for bytes below `bound`, which is at most 0x80.
constexpr std::uint64_t below(std::uint64_t bytes, std::uint8_t bound) {
    return (bytes - kLowBits * bound) & ~bytes & kTopBits;
}

/// Tests for bytes that are `wanted`.
constexpr std::uint64_t equal(std::uint64_t bytes, std::uint8_t wanted) {
    return below(bytes ^ (kLowBits * wanted), 1);
}

/// The first byte in [position, end) that passes, or `end`. `testEight` takes eight bytes and
/// answers as above, `testOne` takes one and answers yes or no; both must test for the same.
const char* find(const char* position, const char* end,
                 std::invocable<std::uint64_t> auto testEight,
                 std::predicate<std::uint8_t> auto testOne) {
    while (end - position >= static_cast<std::ptrdiff_t>(sizeof(std::uint64_t))) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, position, sizeof(bytes));
        if (const std::uint64_t found = testEight(bytes); found != 0) {
            return position + std::countr_zero(found) / 8;
        }
        position += sizeof(bytes);
    }
    while (position != end && !testOne(static_cast<std::uint8_t>(*position))) {
        ++position;
    }
    return position;
}

} // namespace ravenjson::bytescan

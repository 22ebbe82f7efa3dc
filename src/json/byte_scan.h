#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <emmintrin.h> // SSE2, which every x64 processor has

// Byte search with SSE2, 16 bytes at a time.
namespace ravenjson::bytescan {

// A set of the bytes of a Block.
class Marks {
public:
    explicit Marks(__m128i bytes) : bytes_(bytes) {}

    friend Marks operator|(Marks left, Marks right) {
        return Marks(_mm_or_si128(left.bytes_, right.bytes_));
    }

    // One bit for each byte of the block; bit 0 is the first byte.
    [[nodiscard]] unsigned bits() const { return static_cast<unsigned>(_mm_movemask_epi8(bytes_)); }

private:
    __m128i bytes_; // 0xFF for each byte in the set, 0 for the others
};

// 16 bytes of text.
class Block {
public:
    static constexpr std::ptrdiff_t kSize = sizeof(__m128i);

    // Copies 16 bytes from `position`, which need not be aligned.
    explicit Block(const char* position)
        : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(position))) {}

    [[nodiscard]] Marks equalTo(char byte) const {
        return Marks(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(byte)));
    }

    // The bytes from 0 to `bound`, compared as unsigned values.
    [[nodiscard]] Marks upTo(char bound) const {
        return Marks(_mm_cmpeq_epi8(_mm_min_epu8(bytes_, _mm_set1_epi8(bound)), bytes_));
    }

private:
    __m128i bytes_;
};

// Returns the first matching byte in [position, end), or `end` if there is none. `matchBlock`
// returns the matching bytes of a Block; `matchByte` must give the same answer for a single byte.
const char* find(const char* position, const char* end, std::invocable<Block> auto matchBlock,
                 std::predicate<char> auto matchByte) {
    for (; end - position >= Block::kSize; position += Block::kSize) {
        if (const unsigned marks = matchBlock(Block(position)).bits(); marks != 0) {
            return position + std::countr_zero(marks);
        }
    }
    while (position != end && !matchByte(*position)) {
        ++position;
    }
    return position;
}

} // namespace ravenjson::bytescan

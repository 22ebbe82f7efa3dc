#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <emmintrin.h> // SSE2, which every x64 processor has

// Searching text sixteen bytes at a time.
namespace ravenjson::bytescan {

// Some of the bytes of a block.
class Marks {
public:
    explicit Marks(__m128i bytes) : bytes_(bytes) {}

    friend Marks operator|(Marks left, Marks right) {
        return Marks(_mm_or_si128(left.bytes_, right.bytes_));
    }

    // A bit for each byte of the block, the lowest for the first.
    [[nodiscard]] unsigned bits() const { return static_cast<unsigned>(_mm_movemask_epi8(bytes_)); }

private:
    __m128i bytes_; // all ones where there is a mark, else zero
};

// Sixteen bytes of a text.
class Block {
public:
    static constexpr std::ptrdiff_t kSize = sizeof(__m128i);

    explicit Block(const char* position)
        : bytes_(_mm_loadu_si128(reinterpret_cast<const __m128i*>(position))) {}

    [[nodiscard]] Marks equalTo(char byte) const {
        return Marks(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(byte)));
    }

    // Bytes count as unsigned here.
    [[nodiscard]] Marks upTo(char bound) const {
        return Marks(_mm_cmpeq_epi8(_mm_min_epu8(bytes_, _mm_set1_epi8(bound)), bytes_));
    }

private:
    __m128i bytes_;
};

// The first byte in [position, end) that is marked, or `end`. `markBlock` gives the Marks of a
// Block; `isMarked` says the same of one byte.
const char* find(const char* position, const char* end, std::invocable<Block> auto markBlock,
                 std::predicate<char> auto isMarked) {
    for (; end - position >= Block::kSize; position += Block::kSize) {
        if (const unsigned marks = markBlock(Block(position)).bits(); marks != 0) {
            return position + std::countr_zero(marks);
        }
    }
    while (position != end && !isMarked(*position)) {
        ++position;
    }
    return position;
}

} // namespace ravenjson::bytescan

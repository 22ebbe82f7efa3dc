#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ravenjson {

/// The ascending byte order of member names. Names mostly differ early, so the first eight bytes
/// are compared as one number.
struct KeyOrder {
    using is_transparent = void;

    bool operator()(std::string_view left, std::string_view right) const noexcept {
        if (left.size() >= kPrefix && right.size() >= kPrefix) {
            const std::uint64_t leftPrefix = prefix(left);
            const std::uint64_t rightPrefix = prefix(right);
            return leftPrefix != rightPrefix ? leftPrefix < rightPrefix
                                             : left.substr(kPrefix) < right.substr(kPrefix);
        }
        const std::size_t common = std::min(left.size(), right.size());
        for (std::size_t i = 0; i < common; ++i) {
            if (left[i] != right[i]) {
                return static_cast<unsigned char>(left[i]) < static_cast<unsigned char>(right[i]);
            }
        }
        return left.size() < right.size();
    }

private:
    static constexpr std::size_t kPrefix = sizeof(std::uint64_t);

    static std::uint64_t prefix(std::string_view key) noexcept {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < kPrefix; ++i) {
            number = number << 8 | static_cast<unsigned char>(key[i]);
        }
        return number;
    }
};

} // namespace ravenjson

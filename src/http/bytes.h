#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quorin::http {

using Bytes = std::vector<std::uint8_t>;

// The same memory seen as bytes and as text, so that a range is copied in one piece.
inline std::span<const std::uint8_t> asBytes(std::string_view text) noexcept {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view asText(std::span<const std::uint8_t> bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace quorin::http

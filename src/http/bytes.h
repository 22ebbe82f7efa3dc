#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace quorin::http {

using Bytes = std::vector<std::uint8_t>;

// Return a view of the same memory as bytes or as text, valid as long as the memory is.
inline std::span<const std::uint8_t> asBytes(std::string_view text) noexcept {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view asText(std::span<const std::uint8_t> bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace quorin::http

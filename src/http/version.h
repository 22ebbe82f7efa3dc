#pragma once

#include <cstdint>
#include <string_view>

namespace quorin::http {

// Major version in the high byte, minor version in the low byte.
enum class Version : std::int32_t {
    Unknown = 0,
    Http09 = 0x009,
    Http10 = 0x100,
    Http11 = 0x101,
};

// Looks up a version by name, such as "HTTP/1.1", ignoring case. Returns Unknown if there is no
// such version.
Version versionFromName(std::string_view name) noexcept;

// Returns the name in upper case; empty for Unknown and undefined codes.
std::string_view versionName(Version version) noexcept;

} // namespace quorin::http

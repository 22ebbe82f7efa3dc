#pragma once

#include <cstdint>
#include <string_view>

namespace quorin::http {

// The major version in the high byte, the minor one in the low byte.
enum class Version : std::int32_t {
    Unknown = 0,
    Http09 = 0x009,
    Http10 = 0x100,
    Http11 = 0x101,
};

// The version of a name ("HTTP/1.1") in any letter case; Unknown when there is none of that name.
Version versionFromName(std::string_view name) noexcept;

// The canonical name; empty for Unknown and, since it is no better known, for any other code.
std::string_view versionName(Version version) noexcept;

} // namespace quorin::http

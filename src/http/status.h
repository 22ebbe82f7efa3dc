#pragma once

#include <cstdint>
#include <string_view>

namespace quorin::http {

// The standard reason phrase of a status code; empty for a code that has none.
std::string_view reasonPhrase(std::int32_t status) noexcept;

} // namespace quorin::http

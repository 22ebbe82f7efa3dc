#pragma once

#include <string_view>

// The header names the gateway itself reads and writes.
namespace quorin::http {

inline constexpr std::string_view kConnection = "Connection";
inline constexpr std::string_view kContentLength = "Content-Length";
inline constexpr std::string_view kContentType = "Content-Type";
inline constexpr std::string_view kNotificationResetDate = "X-Quorin-Notification-Reset-Date";

} // namespace quorin::http

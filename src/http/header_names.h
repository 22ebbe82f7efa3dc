#pragma once

#include <string_view>

// Names of the headers that the gateway reads or writes.
namespace quorin::http {

inline constexpr std::string_view kConnection = "Connection";
inline constexpr std::string_view kContentLength = "Content-Length";
inline constexpr std::string_view kContentType = "Content-Type";
inline constexpr std::string_view kNotificationResetDate = "X-Quorin-Notification-Reset-Date";

} // namespace quorin::http

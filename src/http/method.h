#pragma once

#include <cstdint>
#include <string_view>

namespace quorin::http {

enum class Method : std::int32_t {
    Unknown = 0,
    Get = 1,
    Head = 2,
    Post = 3,
    Put = 4,
    Delete = 5,
    Connect = 6,
    Options = 7,
    Trace = 8,
};

// Looks up a method by name, ignoring case. Returns Unknown if there is no such method.
Method methodFromName(std::string_view name) noexcept;

// Returns the name in upper case, such as "GET"; "UNKNOWN" for Unknown and undefined codes.
std::string_view methodName(Method method) noexcept;

} // namespace quorin::http

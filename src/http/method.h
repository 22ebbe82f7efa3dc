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

// The method of a name in any letter case; Unknown when there is none of that name.
Method methodFromName(std::string_view name) noexcept;

// The canonical name, in upper case: "GET"; "UNKNOWN" for Unknown and for any other code.
std::string_view methodName(Method method) noexcept;

} // namespace quorin::http

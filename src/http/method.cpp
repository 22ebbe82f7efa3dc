#include "http/method.h"

#include "http/ascii.h"

#include <array>
#include <cstddef>

namespace quorin::http {
namespace {

// Indexed by method code.
constexpr std::array<std::string_view, 9> kNames = {
    "UNKNOWN", "GET", "HEAD", "POST", "PUT", "DELETE", "CONNECT", "OPTIONS", "TRACE",
};

} // namespace

Method methodFromName(std::string_view name) noexcept {
    for (std::size_t code = 0; code < kNames.size(); ++code) {
        if (equalsIgnoreCase(name, kNames[code])) {
            return static_cast<Method>(code);
        }
    }
    return Method::Unknown;
}

std::string_view methodName(Method method) noexcept {
    const auto code = static_cast<std::uint32_t>(method);
    return code < kNames.size() ? kNames[code] : kNames.front();
}

} // namespace quorin::http

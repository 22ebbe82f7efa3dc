#pragma once

#include <cstdint>
#include <exception>
#include <limits>
#include <string>
#include <utility>

namespace quorin {

// What a Result holds in place of a value, and the exception that unwrapping such a Result throws.
// An error whose code is 0 is no error.
struct Error : std::exception {
    // The one code the HTTP parser reports: the bytes are not a well-formed request.
    static constexpr std::int32_t kMalformed = std::numeric_limits<std::int32_t>::min();

    Error() = default;
    explicit Error(std::int32_t errorCode, std::string text = {})
        : code(errorCode), message(std::move(text)) {}

    const char* what() const noexcept override { return message.c_str(); }

    std::int32_t code = 0;
    std::string message;
};

} // namespace quorin

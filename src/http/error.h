#pragma once

#include <cstdint>
#include <exception>
#include <limits>
#include <string>
#include <utility>

namespace quorin {

// The error of a failed Result, which unwrap() throws as an exception. Code 0 means "no error".
struct Error : std::exception {
    // The only code that the HTTP parser reports: the input is not a well-formed request.
    static constexpr std::int32_t kMalformed = std::numeric_limits<std::int32_t>::min();

    Error() = default;
    explicit Error(std::int32_t errorCode, std::string text = {})
        : code(errorCode), message(std::move(text)) {}

    const char* what() const noexcept override { return message.c_str(); }

    std::int32_t code = 0;
    std::string message;
};

} // namespace quorin

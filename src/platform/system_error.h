#pragma once

#include <QString>
#include <QtGlobal>

#include <cstdint>
#include <utility>

namespace quorin::platform {

// Why a call of the system failed: a status code and its description. The code is a value of errno
// or an OpenSSL error code on Linux, and a Windows error code, an HRESULT or a SECURITY_STATUS on
// Windows.
class SystemError {
public:
    SystemError() = default; // no error

    // Takes the description of `code` from the system. `code` must not be an OpenSSL error code.
    explicit SystemError(std::uint32_t code)
        : SystemError(code, code != 0 ? qt_error_string(static_cast<int>(code)) : QString()) {}

    SystemError(std::uint32_t code, QString message) : code_(code), message_(std::move(message)) {}

    // Returns true if there is an error.
    [[nodiscard]] explicit operator bool() const noexcept { return code_ != 0; }

    [[nodiscard]] std::uint32_t code() const noexcept { return code_; } // 0 if there is no error
    [[nodiscard]] const QString& message() const noexcept { return message_; }

private:
    std::uint32_t code_ = 0;
    QString message_;
};

// The result of a call of the system.
template<typename Value>
struct SystemResult {
    Value value{};       // null or empty if the call failed
    SystemError error{}; // why the call failed
};

} // namespace quorin::platform

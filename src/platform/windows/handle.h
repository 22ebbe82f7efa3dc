#pragma once

#include "platform/windows/system.h"

#include <memory>

namespace quorin::platform {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};

// Owns a handle of the system.
using Handle = std::unique_ptr<void, HandleCloser>;

// Takes ownership of `handle`. Returns null if it is one of the two values that mean failure.
[[nodiscard]] inline Handle ownHandle(HANDLE handle) {
    return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

} // namespace quorin::platform

#pragma once

namespace quorin::platform {

// Returns true if standard error is a terminal or, on Windows, a console.
[[nodiscard]] bool isErrorOutputTerminal() noexcept;

} // namespace quorin::platform

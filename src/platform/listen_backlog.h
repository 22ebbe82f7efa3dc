#pragma once

namespace quorin::platform {

// The backlog to listen with so that the system keeps as many connections as it can until they are
// accepted. The system lowers it to its own maximum.
[[nodiscard]] int longestListenBacklog() noexcept;

} // namespace quorin::platform

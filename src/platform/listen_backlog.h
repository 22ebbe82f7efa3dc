#pragma once

namespace quorin::platform {

// Returns the backlog with which the system queues as many connections as it can until they are
// accepted. The system reduces it to its own maximum.
[[nodiscard]] int longestListenBacklog() noexcept;

} // namespace quorin::platform

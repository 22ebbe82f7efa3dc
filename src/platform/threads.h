#pragma once

namespace quorin::platform {

// Returns false if the system cannot start another thread now because memory or the limit of
// threads is exhausted. Checks this by starting a thread that does nothing. Always returns true on
// Windows. Thread-safe.
[[nodiscard]] bool canStartThread();

} // namespace quorin::platform

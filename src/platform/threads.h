#pragma once

namespace quorin::platform {

// False when the system cannot start another thread now, for want of memory or because the process
// has as many as it may have. Found out by starting one that does nothing; where that is not
// needed to know it, the answer is true.
[[nodiscard]] bool canStartThread();

} // namespace quorin::platform

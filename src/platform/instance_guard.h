#pragma once

class QSharedMemory;

namespace platform {

// One attempt to create the one-byte segment of `guard`, whose key is set. True when this process
// holds it now. A segment that another living process holds is never taken; one that a killed
// process left behind is, where the system does not free it by itself.
[[nodiscard]] bool takeInstanceGuard(QSharedMemory& guard);

} // namespace platform

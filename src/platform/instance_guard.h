#pragma once

class QSharedMemory;

namespace quorin::platform {

// Tries once to create the one-byte segment of `guard`, whose key must be set. Returns true if this
// process now holds the segment. Takes over a segment left by a killed process, but never one held
// by a running process.
[[nodiscard]] bool takeInstanceGuard(QSharedMemory& guard);

} // namespace quorin::platform

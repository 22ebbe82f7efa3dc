#pragma once

#include <QString>
#include <QStringView>

class QSharedMemory;

namespace quorin::platform {

// The key of the segment that a gateway holds while it runs.
inline constexpr QStringView kInstanceGuardKey = u"Global\\VEMO_QUORIN_GATEWAY_HTTP";

// Tries once to create the one-byte segment of `guard`, whose key must be set. Returns true if this
// process now holds the segment. Takes over a segment left by a killed process, but never one held
// by a running process.
[[nodiscard]] bool takeInstanceGuard(QSharedMemory& guard);

// Returns true if a running process holds the segment with this key. Neither creates nor attaches
// to the segment, so that no process that takes or releases it is affected.
[[nodiscard]] bool isInstanceGuardHeld(const QString& key);

} // namespace quorin::platform

#pragma once

#include <QString>
#include <QStringView>

#include <memory>

namespace quorin::platform {

// The key of the guard that a gateway holds while it runs.
inline constexpr QStringView kInstanceGuardKey = u"Global\\VEMO_QUORIN_GATEWAY_HTTP";

// The guard that lets only one gateway run on a machine: a shared memory segment of one byte and,
// on Windows, a mutex. The mutex exists because Qt's segments are visible only in the Windows
// session of their process, while a service and an administrator have different sessions.
//
// The destructor releases the guard. The system releases it if the process ends without running
// the destructor; on Linux, the next take() does so. Not thread-safe.
class InstanceGuard {
public:
    // `key` is the key of the segment. On Windows it is also the name of the mutex, which is
    // visible in all sessions if it begins with "Global\".
    explicit InstanceGuard(const QString& key);
    ~InstanceGuard();

    InstanceGuard(const InstanceGuard&) = delete;
    InstanceGuard& operator=(const InstanceGuard&) = delete;

    // Tries once to take the guard; call only until it succeeds. Returns true if this object now
    // holds the guard, false if another object or process holds it or if it cannot be examined. A
    // failed attempt leaves nothing open that would keep others from taking the guard.
    [[nodiscard]] bool take();

private:
    struct State;
    std::unique_ptr<State> state_;
};

// Returns true if a running process holds the guard with this key. Neither creates nor keeps open
// any part of it, so that no process that takes or releases it is affected.
[[nodiscard]] bool isInstanceGuardHeld(const QString& key);

} // namespace quorin::platform

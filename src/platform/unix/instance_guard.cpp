#include "platform/instance_guard.h"

#include <QSharedMemory>

namespace platform {

bool takeInstanceGuard(QSharedMemory& guard) {
    constexpr qsizetype size = 1;
    if (guard.create(size)) {
        return true;
    }
    // A segment outlives a killed process. The last one to detach removes it: that is us, unless
    // its holder lives.
    if (guard.error() != QSharedMemory::AlreadyExists || !guard.attach()) {
        return false;
    }
    guard.detach();
    return guard.create(size);
}

} // namespace platform

#include "platform/instance_guard.h"

#include <QSharedMemory>

namespace quorin::platform {

bool takeInstanceGuard(QSharedMemory& guard) {
    constexpr qsizetype size = 1;
    if (guard.create(size)) {
        return true;
    }
    // The segment of a killed process remains. Detaching removes it unless its holder is still
    // running, because the last process to detach removes a segment.
    if (guard.error() != QSharedMemory::AlreadyExists || !guard.attach()) {
        return false;
    }
    guard.detach();
    return guard.create(size);
}

} // namespace quorin::platform

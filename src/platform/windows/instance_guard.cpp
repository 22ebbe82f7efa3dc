#include "platform/instance_guard.h"

#include <QSharedMemory>

namespace quorin::platform {

// The system frees the segment when its process ends, even if the process is killed.
bool takeInstanceGuard(QSharedMemory& guard) {
    return guard.create(1);
}

} // namespace quorin::platform

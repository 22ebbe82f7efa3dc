#include "platform/instance_guard.h"

#include <QSharedMemory>

namespace platform {

// The system frees the segment with the process that held it, however that ended.
bool takeInstanceGuard(QSharedMemory& guard) {
    return guard.create(1);
}

} // namespace platform

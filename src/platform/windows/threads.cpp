#include "platform/threads.h"

namespace quorin::platform {

// Windows sets no limit for threads and commits their stacks on demand.
bool canStartThread() {
    return true;
}

} // namespace quorin::platform

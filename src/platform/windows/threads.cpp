#include "platform/threads.h"

namespace quorin::platform {

// No bound is set to threads here, and their memory is taken as they need it.
bool canStartThread() {
    return true;
}

} // namespace quorin::platform

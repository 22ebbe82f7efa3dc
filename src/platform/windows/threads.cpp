#include "platform/threads.h"

namespace platform {

// No bound is set to threads here, and their memory is taken as they need it.
bool canStartThread() {
    return true;
}

} // namespace platform

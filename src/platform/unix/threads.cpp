#include "platform/threads.h"

#include <new>
#include <system_error>
#include <thread>

namespace quorin::platform {

// The C library reuses the stack of the ended thread for the next one.
bool canStartThread() {
    try {
        std::thread([] {}).join();
        return true;
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace quorin::platform

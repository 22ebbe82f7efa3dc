#include "platform/threads.h"

#include <exception>
#include <thread>

namespace quorin::platform {

// The C library reuses the stack of the ended thread for the next one.
bool canStartThread() {
    try {
        std::thread([] {}).join();
        return true;
    } catch (const std::exception&) { // std::system_error or std::bad_alloc
        return false;
    }
}

} // namespace quorin::platform

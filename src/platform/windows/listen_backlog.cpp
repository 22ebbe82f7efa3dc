#include "platform/listen_backlog.h"

namespace quorin::platform {

// Winsock takes a request for a backlog of 200 to 65,535 as a negative number.
int longestListenBacklog() noexcept {
    return -65535;
}

} // namespace quorin::platform

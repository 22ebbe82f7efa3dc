#include "platform/listen_backlog.h"

namespace quorin::platform {

// Winsock expects a backlog from 200 to 65,535 as a negative number.
int longestListenBacklog() noexcept {
    return -65535;
}

} // namespace quorin::platform

#include "platform/listen_backlog.h"

namespace quorin::platform {

int longestListenBacklog() noexcept {
    return 65535;
}

} // namespace quorin::platform

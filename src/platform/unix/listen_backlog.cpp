#include "platform/listen_backlog.h"

namespace platform {

int longestListenBacklog() noexcept {
    return 65535;
}

} // namespace platform

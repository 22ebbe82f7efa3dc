#include "platform/socket_descriptor.h"

#include <unistd.h>

namespace quorin::platform {

void SocketDescriptor::close() noexcept {
    if (descriptor_ != kNone) {
        ::close(static_cast<int>(release()));
    }
}

} // namespace quorin::platform

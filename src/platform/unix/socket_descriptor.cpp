#include "platform/socket_descriptor.h"

#include <unistd.h>

namespace platform {

void SocketDescriptor::close() noexcept {
    if (descriptor_ != kNone) {
        ::close(static_cast<int>(release()));
    }
}

} // namespace platform

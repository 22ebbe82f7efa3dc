#include "platform/socket_descriptor.h"

#include "platform/windows/system.h"

#include <winsock2.h>

namespace quorin::platform {

void SocketDescriptor::close() noexcept {
    if (descriptor_ != kNone) {
        closesocket(static_cast<SOCKET>(release()));
    }
}

} // namespace quorin::platform

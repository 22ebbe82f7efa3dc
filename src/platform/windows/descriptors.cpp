#include "platform/descriptors.h"

namespace quorin::platform {

// On Windows, files and sockets are handles. Only memory limits their number.
std::optional<qintptr> descriptorLimit() {
    return std::nullopt;
}

std::optional<qintptr> openDescriptors() {
    return 0;
}

void raiseDescriptorLimit() noexcept {}

bool hasFreeDescriptor() {
    return true;
}

} // namespace quorin::platform

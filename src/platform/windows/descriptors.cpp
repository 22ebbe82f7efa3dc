#include "platform/descriptors.h"

namespace quorin::platform {

// Sockets and files are handles here, whose number is limited by memory alone.
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

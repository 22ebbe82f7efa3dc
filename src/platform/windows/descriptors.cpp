#include "platform/descriptors.h"

namespace platform {

// Sockets are handles here, whose number only memory bounds.
std::optional<qintptr> descriptorLimit() {
    return std::nullopt;
}

std::optional<qintptr> nextDescriptor() {
    return 0;
}

void raiseDescriptorLimit() noexcept {}

} // namespace platform

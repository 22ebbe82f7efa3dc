#include "platform/secret.h"

#include "platform/windows/system.h"

namespace quorin::platform {

void wipe(void* memory, std::size_t size) noexcept {
    SecureZeroMemory(memory, size);
}

} // namespace quorin::platform

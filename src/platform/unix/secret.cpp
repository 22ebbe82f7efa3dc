#include "platform/secret.h"

#include <string.h> // NOLINT(modernize-deprecated-headers): no C++ header declares explicit_bzero

namespace quorin::platform {

void wipe(void* memory, std::size_t size) noexcept {
    explicit_bzero(memory, size);
}

} // namespace quorin::platform

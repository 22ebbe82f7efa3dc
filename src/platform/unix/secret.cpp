#include "platform/secret.h"

#include <string.h> // NOLINT(modernize-deprecated-headers): explicit_bzero is in no C++ header

namespace platform {

void wipe(void* memory, std::size_t size) noexcept {
    explicit_bzero(memory, size);
}

} // namespace platform

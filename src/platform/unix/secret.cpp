#include "platform/secret.h"

#include <array>

#include <string.h> // NOLINT(modernize-deprecated-headers): no C++ header declares explicit_bzero

namespace quorin::platform {

namespace {

constexpr std::size_t kUsedStackSize = std::size_t{64} * 1024;

} // namespace

void wipe(void* memory, std::size_t size) noexcept {
    explicit_bzero(memory, size);
}

// If it were inlined, the array would be in the frame of the caller instead.
[[gnu::noinline]] void wipeUsedStack() noexcept {
    std::array<char, kUsedStackSize> frames;
    wipe(frames.data(), frames.size());
}

} // namespace quorin::platform

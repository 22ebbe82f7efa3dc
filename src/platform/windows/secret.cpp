#include "platform/secret.h"

#include "platform/windows/system.h"

#include <array>

namespace quorin::platform {

namespace {

constexpr std::size_t kUsedStackSize = std::size_t{64} * 1024;

} // namespace

void wipe(void* memory, std::size_t size) noexcept {
    SecureZeroMemory(memory, size);
}

// If it were inlined, the array would be in the frame of the caller instead.
__declspec(noinline) void wipeUsedStack() noexcept {
    std::array<char, kUsedStackSize> frames;
    wipe(frames.data(), frames.size());
}

} // namespace quorin::platform

#pragma once

#include <cstddef>

namespace platform {

// Overwrites `size` bytes at `memory` with zeros in a way that no optimiser leaves out.
void wipe(void* memory, std::size_t size) noexcept;

} // namespace platform

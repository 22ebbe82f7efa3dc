#pragma once

#include <QtGlobal>

#include <optional>

// The number of files and sockets (descriptors) that this process has open, and its limit.
// Thread-safe.
namespace quorin::platform {

// Returns the number of descriptors that the process may have open now (the soft limit), or nothing
// if the system sets no limit.
[[nodiscard]] std::optional<qintptr> descriptorLimit();

// Returns the number of descriptors that the process has open, or nothing if no descriptor is free
// for counting them. Returns 0 if the system sets no limit or does not report the number. Takes
// time in proportion to the number.
[[nodiscard]] std::optional<qintptr> openDescriptors();

// Returns false if no descriptor is free for an event loop created now. Another thread may take the
// last one at any time.
[[nodiscard]] bool hasFreeDescriptor();

// Raises the limit of this process to the highest value that needs no privileges (the hard limit).
// Leaves it unchanged if that fails.
void raiseDescriptorLimit() noexcept;

} // namespace quorin::platform

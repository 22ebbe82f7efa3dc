#pragma once

#include <QtGlobal>

#include <optional>

// How many files and sockets (descriptors) this process has open, and may have open. Any thread.
namespace quorin::platform {

// The number of descriptors that the process may have open now; nothing where the system sets no
// limit.
[[nodiscard]] std::optional<qintptr> descriptorLimit();

// The number of descriptors that the process has open, or nothing if no descriptor is free to count
// them with. Takes time in proportion to that number. 0 where the system sets no limit or does not
// report the number.
[[nodiscard]] std::optional<qintptr> openDescriptors();

// Returns false if an event loop made now would find no free descriptor. Cheap. Another thread may
// take the last one at any time.
[[nodiscard]] bool hasFreeDescriptor();

// Raises the number of files and sockets that this process may have open to the highest number that
// the system allows it without privileges. Leaves the limit unchanged if that fails.
void raiseDescriptorLimit() noexcept;

} // namespace quorin::platform

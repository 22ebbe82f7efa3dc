#pragma once

#include <QtGlobal>

#include <optional>

// How far this process is from the number of files and sockets it may have open. Descriptors are
// numbers, and the lowest that is free is the next.
namespace platform {

// Descriptors are below this; nothing where the system sets no such bound.
[[nodiscard]] std::optional<qintptr> descriptorLimit();

// The one that the next file or socket would get; nothing when there is none left. 0 where the
// system sets no bound.
[[nodiscard]] std::optional<qintptr> nextDescriptor();

// Raises the number of files and sockets that this process may have open to the highest number that
// the system allows it without privileges. Leaves the limit unchanged if that fails.
void raiseDescriptorLimit() noexcept;

} // namespace platform

#pragma once

#include <QString>

namespace quorin::platform {

// Returns the folder of the library or program that contains this code, with a trailing backslash.
// Empty if the system does not report it.
[[nodiscard]] QString ownFolder();

} // namespace quorin::platform

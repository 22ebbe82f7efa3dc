#pragma once

#include "platform/protected_folders.h"

#include <QString>

#include <vector>

namespace quorin {

// Returns the folders of the gateway on this machine, with the access that its service needs, from
// the top down. The first contains all others.
[[nodiscard]] std::vector<platform::ProtectedFolder> serviceFolders();

} // namespace quorin

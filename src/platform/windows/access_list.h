#pragma once

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace quorin::platform {

// A security descriptor that contains only an access control list (DACL).
using AccessList = std::vector<std::byte>;

// Returns the access control list of the file `path`, or nothing if the system does not allow it.
[[nodiscard]] std::optional<AccessList> readAccessList(const QString& path);

// Sets the access control list of the file `path`, with the marks of inherited entries. Returns
// false if the system does not allow it.
bool writeAccessList(const QString& path, AccessList list);

} // namespace quorin::platform

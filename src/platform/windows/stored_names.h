#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace quorin::platform {

// Returns the name under which the file or folder `path` is stored, or nothing if there is none.
using StoredNameLookup = std::function<std::optional<QString>(const QString& path)>;

// Returns true if each name in `path`, which begins with "/" and follows `folder`, is the stored
// name of a file or folder, in any letter case. Several "/" count as one. Returns false for a name
// that ends in "." or a space, which Windows removes, and for a path that ends in "/".
[[nodiscard]] bool hasStoredNames(const QString& folder, const QString& path,
                                  const StoredNameLookup& storedName);

} // namespace quorin::platform

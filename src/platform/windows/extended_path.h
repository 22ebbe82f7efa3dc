#pragma once

#include <QString>

namespace quorin::platform {

// Returns the absolute form of `path` with the prefix "\\?\", for Windows functions. Such a path
// may have up to 32,767 characters instead of 260. The system does not change or interpret its
// names: neither a trailing "." nor the name of a device such as "NUL" has a special meaning.
[[nodiscard]] QString extendedPath(const QString& path);

} // namespace quorin::platform

#pragma once

#include <QString>

namespace quorin::platform {

// Returns true if the system finds the existing file `folder` + `path` although one of the names in
// `path` is not the stored name of the file or folder that it leads to. On Windows, "a.zip." and
// the short name "A23456~1.ZIP" are such aliases. Another letter case is not an alias, and the
// names in `folder` are not examined. Always returns false on systems where a file has no such
// aliases.
//
// `path` begins with "/". If a folder cannot be listed, the names in it count as aliases.
[[nodiscard]] bool isFileAlias(const QString& folder, const QString& path);

} // namespace quorin::platform

#pragma once

#include <QString>

namespace platform {

// Moves the file `from` over the existing file `to` in one step: whoever opens `to` meanwhile
// finds the old content or the new one, never a part. Both lie on one volume. False, with both
// files as they were, when the system refuses.
[[nodiscard]] bool replaceFile(const QString& from, const QString& to);

} // namespace platform

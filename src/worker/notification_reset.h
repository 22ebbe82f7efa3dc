#pragma once

#include <QString>

namespace quorin {

// Resets the notification file at `filePath`, a JSON document, under its lock: pending items that
// are not newer than `resetDate` (ISO 8601) are marked as no longer present; when none is newer
// the document is emptied. The file is replaced by a complete new one, or left as it was.
//
// False when the lock is not to be had, which is logged, or the document cannot be read, is not of
// the expected form, or cannot be written.
[[nodiscard]] bool resetNotification(const QString& filePath, const QString& resetDate);

} // namespace quorin

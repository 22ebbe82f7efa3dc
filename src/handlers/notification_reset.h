#pragma once

#include <QString>

namespace quorin {

// Resets the notification file at `filePath`, a JSON document, under its lock: marks pending items
// that are not newer than `resetDate` (ISO 8601) as no longer present, and empties the document if
// no item is newer. Replaces the file with a complete new one. When this returns true, the new
// file survives a power failure, except in the case that platform/replace_file.h describes.
//
// Returns false, with the file unchanged, if the lock cannot be acquired, which is logged, or the
// document cannot be read, does not have the expected form, or cannot be written to the disk.
[[nodiscard]] bool resetNotification(const QString& filePath, const QString& resetDate);

} // namespace quorin

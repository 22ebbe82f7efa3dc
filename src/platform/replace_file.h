#pragma once

#include <QString>

class QFile;

namespace quorin::platform {

// Flushes `file`, which is open for writing, to the disk: first its own buffer, then the system's.
// Returns false if either fails.
[[nodiscard]] bool flushToDisk(QFile& file);

// Renames the file `from` to `to` atomically and replaces `to` if it exists: a process that opens
// `to` at the same time reads the complete old or the complete new content. Both paths must be on
// the same volume. Returns false, with both files unchanged, if the system refuses.
//
// The new file keeps the access rights of an existing `to` (Unix: the mode, Windows: the access
// control list) as far as the system allows it, but not its owner and group. On Windows, retries
// for 2 s if another program has one of the files open.
//
// The rename has been flushed to the disk when this returns. It survives a power failure if the
// content of `from` was flushed before. A folder that cannot be flushed, as on some network file
// systems, is not an error, because the rename cannot be undone; a power failure may then restore
// the complete old content.
[[nodiscard]] bool replaceFile(const QString& from, const QString& to);

} // namespace quorin::platform

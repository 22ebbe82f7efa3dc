#pragma once

#include <QString>

class QFile;

namespace quorin::platform {

// Writes the content of `file`, which is open for writing, from its own and the system's buffers
// to the disk. Returns false if either fails.
[[nodiscard]] bool flushToDisk(QFile& file);

// Moves the file `from` to `to` in one step, over the file `to` if it exists: a process that opens
// `to` meanwhile finds the old content or the new one, never a part. Both are on one volume.
// Returns false, with both files unchanged, if the system refuses.
//
// The move itself is on the disk when this returns, so that it survives a power cut if the content
// of `from` was flushed before. Exception: a folder that cannot be flushed, as on some network file
// systems, is not an error, since the move has been made and cannot be undone. A power cut may then
// bring back the old content, complete.
[[nodiscard]] bool replaceFile(const QString& from, const QString& to);

} // namespace quorin::platform

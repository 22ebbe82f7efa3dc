#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

namespace quorin::platform {

// Opens the existing file `path` for reading, unbuffered. Returns null if that fails.
//
// While the device is open, other processes may read, write, rename and delete the file. Renaming
// or deleting it does not affect the device: it continues to read the content of the file that was
// opened. The device belongs to the calling thread.
[[nodiscard]] std::unique_ptr<QIODevice> openForReading(const QString& path);

} // namespace quorin::platform

#pragma once

#include <QtGlobal>

namespace quorin {

// The greatest length, in UTF-16 units, of a path that the file system is asked about. Windows
// functions fail above 32,766 units, and Qt does not handle that failure; it also stores
// positions within a path in 16 bits. The margin leaves space for the drive and prefixes that Qt
// adds. A longer path is treated as one that names no file.
inline constexpr qsizetype kMaxPathLength = 32'000;

} // namespace quorin

#pragma once

#include <QtGlobal>

namespace quorin {

// The maximum length, in UTF-16 units, of a path that is passed to the file system. Windows
// functions fail above 32,766 units, and Qt does not handle that failure; it also stores positions
// within a path in 16 bits. The margin is for the drive and the prefixes that Qt adds. A longer
// path is treated as one that names no file.
inline constexpr qsizetype kMaxPathLength = 32'000;

} // namespace quorin

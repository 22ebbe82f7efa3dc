#pragma once

#include <string_view>

namespace lumetrix2 {

// Writes "lumetrix: TEXT" as one line to standard error, the last resort of a log that cannot be
// written. Control characters in `text` are escaped as in a log line.
void tellOnStandardError(std::string_view text);

} // namespace lumetrix2

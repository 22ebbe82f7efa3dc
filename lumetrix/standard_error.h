#pragma once

#include <string_view>

namespace lumetrix {

// Writes "lumetrix: TEXT" as one line to standard error, for errors of the log itself. Escapes
// `text` like a message in a log line. Ignores write errors. Thread-safe.
void reportToStandardError(std::string_view text);

} // namespace lumetrix

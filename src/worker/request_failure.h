#pragma once

#include <QString>

namespace quorin {

enum class FailureLog { Write, Suppress };

// Ends the handling of a request: throws a GatewayException of kind Request whose message is
// `text` behind the usual prefix. The worker settles it and logs it, unless it is suppressed.
[[noreturn]] void failRequest(const QString& text, FailureLog log = FailureLog::Write);

} // namespace quorin

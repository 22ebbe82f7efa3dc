#pragma once

#include <QString>

namespace quorin {

// Whether the worker logs the failure of a request.
enum class FailureLog { Write, Suppress };

// Ends the handling of a request: throws a GatewayException of kind Request with the message
// `reason` after the usual prefix. The worker catches it, logs it unless suppressed, and sends
// status 500 unless a success header has been sent.
[[noreturn]] void failRequest(const QString& reason, FailureLog log = FailureLog::Write);

} // namespace quorin

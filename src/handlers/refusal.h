#pragma once

#include "handlers/request_failure.h"
#include "http/status.h"

#include <QString>

namespace quorin {

struct RequestContext;

// Refuses the request: sends `status` without a body, then fails it with `reason`, see
// failRequest(). The client therefore receives a second reply, 500 (docs/compatibility.md).
[[noreturn]] void refuse(RequestContext& context, http::Status status, const QString& reason,
                         FailureLog log = FailureLog::Write);

} // namespace quorin

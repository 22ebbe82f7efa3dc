#pragma once

#include <QtGlobal>

#include <chrono>

namespace quorin {

// Answers the connection `descriptor`, which it takes over, with status 503 in plain bytes, and
// closes it. Blocks the caller: up to `timeout` for the client to send something, which is not
// read, and as long again for the reply to leave.
void refuseConnection(qintptr descriptor,
                      std::chrono::milliseconds timeout = std::chrono::seconds(30));

} // namespace quorin

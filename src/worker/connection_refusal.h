#pragma once

#include <QtGlobal>

#include <chrono>

namespace quorin {

// Sends status 503 in plain bytes on the connection `descriptor`, which it takes over, and closes
// it. Blocks the caller: up to `timeout` until the client sends something, which is not read, and
// up to `timeout` again until the reply is sent.
void refuseConnection(qintptr descriptor,
                      std::chrono::milliseconds timeout = std::chrono::seconds(30));

} // namespace quorin

#pragma once

#include <QtGlobal>

#include <chrono>

namespace quorin {

// Takes ownership of the connection `descriptor`, sends status 503 on it, unencrypted even if HTTPS
// is enabled (docs/compatibility.md), and closes it. Blocks the calling thread: up to `timeout`
// until the client sends something, which is not read, and up to `timeout` again until the reply is
// sent.
void refuseConnection(qintptr descriptor,
                      std::chrono::milliseconds timeout = std::chrono::seconds(30));

} // namespace quorin

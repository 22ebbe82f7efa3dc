#pragma once

#include <QtGlobal>

// Socket operations that Qt does not offer.
namespace quorin::test {

// Shuts down sending; receiving continues. Returns false on error.
[[nodiscard]] bool shutdownSending(qintptr socketDescriptor);

// Makes close() reset the connection. Returns false on error.
[[nodiscard]] bool resetOnClose(qintptr socketDescriptor);

// Requests a receive buffer of `bytes` and returns the size granted.
[[nodiscard]] qint64 enlargeReceiveBuffer(qintptr socketDescriptor, qint64 bytes);

// Returns the number of bytes received but not yet read.
[[nodiscard]] qint64 unreadBytes(qintptr socketDescriptor);

} // namespace quorin::test

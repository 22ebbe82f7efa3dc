#pragma once

#include <QByteArrayView>
#include <QtGlobal>

// Socket operations that Qt does not offer.
namespace quorin::test {

// Shuts down sending; receiving continues. Returns false on error.
[[nodiscard]] bool shutdownSending(qintptr socketDescriptor);

// Makes close() reset the connection. Returns false on error.
[[nodiscard]] bool resetOnClose(qintptr socketDescriptor);

// Requests a receive buffer of `bytes` and returns the size granted.
[[nodiscard]] qint64 enlargeReceiveBuffer(qintptr socketDescriptor, qint64 bytes);

// Set the size of a buffer. Add a test failure on error.
void setSendBuffer(qintptr socketDescriptor, int bytes);
void setReceiveBuffer(qintptr socketDescriptor, int bytes);

// Makes calls for the socket block. Returns false on error.
[[nodiscard]] bool makeBlocking(qintptr socketDescriptor);

// Sends at least one of the bytes and returns how many, or -1 on error.
[[nodiscard]] qint64 sendSome(qintptr socketDescriptor, QByteArrayView bytes);

// Returns the number of bytes received but not yet read.
[[nodiscard]] qint64 unreadBytes(qintptr socketDescriptor);

} // namespace quorin::test

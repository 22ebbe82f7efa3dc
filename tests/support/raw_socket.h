#pragma once

#include <QtGlobal>

// What Qt does not offer to do with a socket.
namespace quorin::test {

// Sends no more, but still listens; false when the system refuses.
[[nodiscard]] bool endSending(qintptr socketDescriptor);

// From now on closing the socket resets the connection; false when the system refuses.
[[nodiscard]] bool resetOnClose(qintptr socketDescriptor);

// Asks for a receive buffer of `bytes`; how large it is then.
[[nodiscard]] qint64 enlargeReceiveBuffer(qintptr socketDescriptor, qint64 bytes);

// How much has arrived and was not read yet.
[[nodiscard]] qint64 arrivedBytes(qintptr socketDescriptor);

} // namespace quorin::test

#pragma once

#include <QByteArrayView>
#include <QDeadlineTimer>
#include <QtGlobal>

namespace quorin::platform {

// Sends `bytes` on the connected, non-blocking socket `descriptor`; waits while the system has no
// space for them. Returns the number of bytes sent. It is less than the size of `bytes` if the
// deadline expires, if the peer sends something or disconnects, or at an error. The caller then
// handles that with the object that owns the socket; this function reads nothing from it. Call it
// on the thread of that object, while the object has nothing to send.
[[nodiscard]] qint64 sendDirectly(qintptr descriptor, QByteArrayView bytes,
                                  const QDeadlineTimer& deadline);

} // namespace quorin::platform

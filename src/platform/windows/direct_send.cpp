#include "platform/direct_send.h"

#include "platform/windows/system.h"

#include <winsock2.h>

#include <algorithm>
#include <limits>

namespace quorin::platform {

namespace {

constexpr qint64 kLongest = std::numeric_limits<int>::max();

// Returns false if anything but space for sending is reported, or if the deadline expires.
bool waitForSpace(SOCKET socket, const QDeadlineTimer& deadline) {
    WSAPOLLFD state{.fd = socket, .events = POLLRDNORM | POLLWRNORM, .revents = 0};
    const int timeout = static_cast<int>(std::min(deadline.remainingTime(), kLongest));
    return WSAPoll(&state, 1, timeout) == 1 && state.revents == POLLWRNORM;
}

} // namespace

qint64 sendDirectly(qintptr descriptor, QByteArrayView bytes, const QDeadlineTimer& deadline) {
    const auto socket = static_cast<SOCKET>(descriptor);
    qsizetype sent = 0;
    while (sent < bytes.size() && !deadline.hasExpired() && waitForSpace(socket, deadline)) {
        const qint64 size = std::min<qint64>(bytes.size() - sent, kLongest);
        const int count = send(socket, bytes.data() + sent, static_cast<int>(size), 0);
        if (count <= 0) {
            break;
        }
        sent += count;
    }
    return sent;
}

} // namespace quorin::platform

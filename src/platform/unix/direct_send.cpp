#include "platform/direct_send.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <limits>

namespace quorin::platform {

namespace {

// Returns false if anything but space for sending is reported, or if the deadline expires.
bool waitForSpace(int socket, const QDeadlineTimer& deadline) {
    constexpr qint64 longest = std::numeric_limits<int>::max();
    pollfd state{.fd = socket, .events = POLLIN | POLLOUT, .revents = 0};
    const int timeout = static_cast<int>(std::min(deadline.remainingTime(), longest));
    return poll(&state, 1, timeout) == 1 && state.revents == POLLOUT;
}

} // namespace

qint64 sendDirectly(qintptr descriptor, QByteArrayView bytes, const QDeadlineTimer& deadline) {
    const int socket = static_cast<int>(descriptor);
    qsizetype sent = 0;
    while (sent < bytes.size() && !deadline.hasExpired() && waitForSpace(socket, deadline)) {
        const ssize_t count =
            send(socket, bytes.data() + sent, static_cast<std::size_t>(bytes.size() - sent),
                 MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count <= 0) {
            break;
        }
        sent += count;
    }
    return sent;
}

} // namespace quorin::platform

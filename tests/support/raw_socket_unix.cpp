#include "support/raw_socket.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

namespace quorin::test {

namespace {

template<typename Value>
bool setOption(qintptr socketDescriptor, int option, const Value& value) {
    return setsockopt(static_cast<int>(socketDescriptor), SOL_SOCKET, option, &value,
                      sizeof(value)) == 0;
}

} // namespace

bool shutdownSending(qintptr socketDescriptor) {
    return shutdown(static_cast<int>(socketDescriptor), SHUT_WR) == 0;
}

bool resetOnClose(qintptr socketDescriptor) {
    return setOption(socketDescriptor, SO_LINGER, linger{.l_onoff = 1, .l_linger = 0});
}

qint64 enlargeReceiveBuffer(qintptr socketDescriptor, qint64 bytes) {
    const auto wanted = static_cast<int>(bytes);
#ifdef SO_RCVBUFFORCE
    if (!setOption(socketDescriptor, SO_RCVBUFFORCE, wanted)) // privileged, has no limit
#endif
    {
        setOption(socketDescriptor, SO_RCVBUF, wanted);
    }
    int granted = 0;
    socklen_t size = sizeof(granted);
    getsockopt(static_cast<int>(socketDescriptor), SOL_SOCKET, SO_RCVBUF, &granted, &size);
    return granted;
}

void setSendBuffer(qintptr socketDescriptor, int bytes) {
    EXPECT_TRUE(setOption(socketDescriptor, SO_SNDBUF, bytes));
}

void setReceiveBuffer(qintptr socketDescriptor, int bytes) {
    EXPECT_TRUE(setOption(socketDescriptor, SO_RCVBUF, bytes));
}

bool makeBlocking(qintptr socketDescriptor) {
    return fcntl(static_cast<int>(socketDescriptor), F_SETFL, 0) == 0;
}

qint64 sendSome(qintptr socketDescriptor, QByteArrayView bytes) {
    return send(static_cast<int>(socketDescriptor), bytes.data(),
                static_cast<std::size_t>(bytes.size()), MSG_NOSIGNAL);
}

qint64 unreadBytes(qintptr socketDescriptor) {
    int count = 0;
    return ioctl(static_cast<int>(socketDescriptor), FIONREAD, &count) == 0 ? count : 0;
}

} // namespace quorin::test

#include "support/raw_socket.h"

#include <winsock2.h>

#include <gtest/gtest.h>

namespace quorin::test {

namespace {

template<typename Value>
bool setOption(qintptr socketDescriptor, int option, const Value& value) {
    return setsockopt(static_cast<SOCKET>(socketDescriptor), SOL_SOCKET, option,
                      reinterpret_cast<const char*>(&value), sizeof(value)) == 0;
}

} // namespace

bool shutdownSending(qintptr socketDescriptor) {
    return shutdown(static_cast<SOCKET>(socketDescriptor), SD_SEND) == 0;
}

bool resetOnClose(qintptr socketDescriptor) {
    return setOption(socketDescriptor, SO_LINGER, linger{.l_onoff = 1, .l_linger = 0});
}

qint64 enlargeReceiveBuffer(qintptr socketDescriptor, qint64 bytes) {
    setOption(socketDescriptor, SO_RCVBUF, static_cast<int>(bytes));
    int granted = 0;
    int size = sizeof(granted);
    getsockopt(static_cast<SOCKET>(socketDescriptor), SOL_SOCKET, SO_RCVBUF,
               reinterpret_cast<char*>(&granted), &size);
    return granted;
}

void setSendBuffer(qintptr socketDescriptor, int bytes) {
    EXPECT_TRUE(setOption(socketDescriptor, SO_SNDBUF, bytes));
}

void setReceiveBuffer(qintptr socketDescriptor, int bytes) {
    EXPECT_TRUE(setOption(socketDescriptor, SO_RCVBUF, bytes));
}

bool makeBlocking(qintptr socketDescriptor) {
    const auto socket = static_cast<SOCKET>(socketDescriptor);
    u_long isNonBlocking = 0;
    WSAEventSelect(socket, nullptr, 0); // with events a socket does not block
    return ioctlsocket(socket, static_cast<long>(FIONBIO), &isNonBlocking) == 0;
}

qint64 sendSome(qintptr socketDescriptor, QByteArrayView bytes) {
    return send(static_cast<SOCKET>(socketDescriptor), bytes.data(), static_cast<int>(bytes.size()),
                0);
}

qint64 unreadBytes(qintptr socketDescriptor) {
    u_long count = 0;
    return ioctlsocket(static_cast<SOCKET>(socketDescriptor), FIONREAD, &count) == 0
               ? static_cast<qint64>(count)
               : 0;
}

} // namespace quorin::test

#pragma once

#include "require.h"

#include <QByteArray>
#include <QtGlobal>

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

// The other end of a connection with the gateway. Owns its descriptor. Never blocks.
class Peer {
public:
    explicit Peer(int descriptor) : descriptor_(descriptor) {}
    ~Peer() { disconnect(); }

    Peer(Peer&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Peer& operator=(Peer&&) = delete;

    // Sends all of `bytes`, which must fit into the socket's buffer, unless the gateway has closed
    // the connection.
    void send(std::string_view bytes) const {
        if (bytes.empty() || !isConnected()) {
            return;
        }
        const auto sent =
            ::send(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        require(sent == static_cast<ssize_t>(bytes.size()) || errno == EPIPE || errno == ECONNRESET,
                "the bytes fit into the buffer");
    }

    void stopSending() const {
        if (isConnected()) {
            shutdown(descriptor_, SHUT_WR);
        }
    }

    void disconnect() {
        if (isConnected()) {
            close(std::exchange(descriptor_, -1));
        }
    }

    // Returns false after disconnect().
    [[nodiscard]] bool isConnected() const { return descriptor_ >= 0; }

    // Appends what the gateway has sent to `received`. Returns true once the gateway has closed the
    // connection.
    bool receive(QByteArray& received) const {
        std::array<char, 4096> part{};
        for (;;) {
            const auto count = recv(descriptor_, part.data(), part.size(), MSG_DONTWAIT);
            if (count <= 0) {
                return count == 0 || errno != EAGAIN;
            }
            received.append(part.data(), count);
        }
    }

private:
    int descriptor_;
};

// Returns the gateway's end of a new connection, which the caller owns, and the other end.
inline std::pair<qintptr, Peer> connectedPair() {
    std::array<int, 2> ends{};
    require(socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0,
            "the socket pair can be created");
    return {ends[0], Peer(ends[1])};
}

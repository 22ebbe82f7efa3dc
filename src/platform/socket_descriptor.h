#pragma once

#include <QtGlobal>

#include <utility>

namespace quorin::platform {

// Owns the descriptor of an accepted connection until release() is called. The destructor closes
// the connection if it is still owned. Not thread-safe.
class SocketDescriptor {
public:
    explicit SocketDescriptor(qintptr descriptor) noexcept : descriptor_(descriptor) {}
    ~SocketDescriptor() { close(); }

    SocketDescriptor(SocketDescriptor&& other) noexcept : descriptor_(other.release()) {}
    SocketDescriptor& operator=(SocketDescriptor&&) = delete;

    [[nodiscard]] qintptr get() const noexcept { return descriptor_; }

    // Transfers ownership of the descriptor to the caller.
    [[nodiscard]] qintptr release() noexcept { return std::exchange(descriptor_, kNone); }

private:
    static constexpr qintptr kNone = -1;

    void close() noexcept;

    qintptr descriptor_;
};

} // namespace quorin::platform

#pragma once

#include <QtGlobal>

#include <utility>

namespace platform {

// Owns an accepted socket's descriptor until somebody takes it: a connection that is dropped
// before anyone read from it is closed with this object.
class SocketDescriptor {
public:
    explicit SocketDescriptor(qintptr descriptor) noexcept : descriptor_(descriptor) {}
    ~SocketDescriptor() { close(); }

    SocketDescriptor(SocketDescriptor&& other) noexcept : descriptor_(other.release()) {}
    SocketDescriptor& operator=(SocketDescriptor&&) = delete;

    [[nodiscard]] qintptr get() const noexcept { return descriptor_; }

    // Hands the descriptor to the caller, who closes it from now on.
    [[nodiscard]] qintptr release() noexcept { return std::exchange(descriptor_, kNone); }

private:
    static constexpr qintptr kNone = -1;

    void close() noexcept;

    qintptr descriptor_;
};

} // namespace platform

#pragma once

#include <QByteArrayView>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>

namespace quorin::platform {

// Overwrites `size` bytes at `memory` with zeros. The compiler cannot optimise the writes away.
void wipe(void* memory, std::size_t size) noexcept;

// Overwrites the part of the calling thread's stack that functions called before may have used, up
// to a depth of 64 KiB. For libraries that leave secrets there.
void wipeUsedStack() noexcept;

// A byte buffer for private keys. Wiped before it is freed: otherwise the key would remain in freed
// memory and could appear in a core dump. Cannot be copied or enlarged, since both could leave
// copies in memory. Not thread-safe.
class SecretBytes {
public:
    SecretBytes() = default;
    // Creates `size` zero bytes.
    explicit SecretBytes(std::size_t size)
        : bytes_(size != 0 ? std::make_unique<char[]>(size) : nullptr), size_(size) {}
    ~SecretBytes() { truncate(0); }

    SecretBytes(SecretBytes&& other) noexcept
        : bytes_(std::move(other.bytes_)), size_(std::exchange(other.size_, 0)) {}
    SecretBytes& operator=(SecretBytes&& other) noexcept {
        std::swap(bytes_, other.bytes_);
        std::swap(size_, other.size_);
        return *this;
    }
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    // Returns the concatenation of `parts`.
    [[nodiscard]] static SecretBytes joined(std::initializer_list<QByteArrayView> parts) {
        std::size_t size = 0;
        for (const QByteArrayView part : parts) {
            size += static_cast<std::size_t>(part.size());
        }
        SecretBytes result(size);
        char* end = result.data();
        for (const QByteArrayView part : parts) {
            end = std::copy(part.begin(), part.end(), end);
        }
        return result;
    }

    [[nodiscard]] char* data() noexcept { return bytes_.get(); }
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
    // Returns a view that is valid until the buffer is truncated, moved or destroyed.
    [[nodiscard]] QByteArrayView view() const noexcept {
        return {bytes_.get(), static_cast<qsizetype>(size_)};
    }

    // Wipes and drops all bytes after the first `size`. Does nothing if size() <= `size`.
    void truncate(std::size_t size) noexcept {
        if (size < size_) {
            wipe(bytes_.get() + size, size_ - size);
            size_ = size;
        }
    }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

} // namespace quorin::platform

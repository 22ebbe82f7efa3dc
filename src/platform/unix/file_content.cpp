#include "platform/unix/file_content.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <utility>

namespace quorin::platform {

namespace {

class FileDescriptor {
public:
    // O_NONBLOCK: opening a named pipe must not wait for a writer.
    explicit FileDescriptor(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~FileDescriptor() {
        if (descriptor_ != -1) {
            ::close(descriptor_);
        }
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    [[nodiscard]] int get() const noexcept { return descriptor_; }

private:
    int descriptor_;
};

// Reads until `bytes` is full or the file ends, and truncates `bytes` to what was read. Returns
// false on an error.
bool readInto(SecretBytes& bytes, int descriptor) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(descriptor, bytes.data() + done, bytes.size() - done);
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    bytes.truncate(done);
    return true;
}

} // namespace

SystemResult<std::optional<FileContent>> readFile(const std::string& path, std::size_t maxSize) {
    const auto failed = [](int code) {
        return SystemResult<std::optional<FileContent>>{
            std::nullopt, SystemError(static_cast<std::uint32_t>(code))};
    };
    const FileDescriptor file(path);
    struct stat status {};
    if (file.get() == -1 || ::fstat(file.get(), &status) != 0) {
        return failed(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return failed(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    if (static_cast<std::size_t>(status.st_size) > maxSize) {
        return failed(EFBIG);
    }
    FileContent content{SecretBytes(static_cast<std::size_t>(status.st_size)),
                        (status.st_mode & S_IROTH) != 0};
    if (!readInto(content.bytes, file.get())) {
        return failed(errno);
    }
    return {std::move(content), {}};
}

} // namespace quorin::platform

#include "platform/held_file.h"

#include "platform/socket_descriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace quorin::platform {

namespace {

// A lock of the open file, which the system releases with the last descriptor of it.
struct flock wholeFile(short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    return lock;
}

// The file may be in a folder to which other accounts may write: refuses what they may have put
// there.
bool isOwnRegularFile(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
}

class LockedFile final : public HeldFile {
public:
    LockedFile(QByteArray path, SocketDescriptor descriptor)
        : path_(std::move(path)), descriptor_(std::move(descriptor)) {}
    ~LockedFile() override { unlink(path_.constData()); }

private:
    QByteArray path_;
    SocketDescriptor descriptor_;
};

} // namespace

std::unique_ptr<HeldFile> HeldFile::create(const QString& path, const QByteArray& content) {
    const QByteArray name = QFile::encodeName(path);
    SocketDescriptor file(
        open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0644));
    const int descriptor = static_cast<int>(file.get());
    struct flock lock = wholeFile(F_WRLCK);
    if (descriptor == -1 || !isOwnRegularFile(descriptor) ||
        fcntl(descriptor, F_OFD_SETLK, &lock) == -1 || ftruncate(descriptor, 0) == -1 ||
        write(descriptor, content.constData(), static_cast<std::size_t>(content.size())) !=
            content.size()) {
        return nullptr;
    }
    return std::make_unique<LockedFile>(name, std::move(file));
}

std::optional<QByteArray> HeldFile::read(const QString& path) {
    const SocketDescriptor file(
        open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    const int descriptor = static_cast<int>(file.get());
    struct flock lock = wholeFile(F_RDLCK);
    // Only asks whether the lock could be taken.
    if (descriptor == -1 || fcntl(descriptor, F_OFD_GETLK, &lock) == -1 || lock.l_type == F_UNLCK) {
        return std::nullopt;
    }
    QFile content;
    return content.open(descriptor, QIODevice::ReadOnly) ? content.readAll() : QByteArray();
}

} // namespace quorin::platform

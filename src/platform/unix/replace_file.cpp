#include "platform/replace_file.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

namespace quorin::platform {

namespace {

bool flushDescriptor(int descriptor) {
    int result = 0;
    do {
        result = fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

void flushFolderOf(const QString& path) {
    const QByteArray folder = QFile::encodeName(QFileInfo(path).path());
    const int descriptor = open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        flushDescriptor(descriptor);
        close(descriptor);
    }
}

std::optional<mode_t> permissions(const char* path) {
    struct stat status {};
    if (stat(path, &status) != 0) {
        return std::nullopt;
    }
    return status.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO);
}

} // namespace

bool flushToDisk(QFile& file) {
    return file.flush() && flushDescriptor(file.handle());
}

bool replaceFile(const QString& from, const QString& to) {
    const QByteArray source = QFile::encodeName(from);
    const QByteArray target = QFile::encodeName(to);
    const std::optional<mode_t> own = permissions(source.constData());
    const std::optional<mode_t> kept = permissions(target.constData());
    const bool isChanged = own && kept && chmod(source.constData(), *kept) == 0;
    if (std::rename(source.constData(), target.constData()) != 0) {
        if (isChanged) {
            static_cast<void>(chmod(source.constData(), *own));
        }
        return false;
    }
    flushFolderOf(to);
    return true;
}

} // namespace quorin::platform

#include "platform/replace_file.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

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

} // namespace

bool flushToDisk(QFile& file) {
    return file.flush() && flushDescriptor(file.handle());
}

bool replaceFile(const QString& from, const QString& to) {
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0) {
        return false;
    }
    flushFolderOf(to);
    return true;
}

} // namespace quorin::platform

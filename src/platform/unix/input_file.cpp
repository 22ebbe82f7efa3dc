#include "platform/input_file.h"

#include <QFile>

namespace quorin::platform {

std::unique_ptr<QIODevice> openForReading(const QString& path) {
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return nullptr;
    }
    return file;
}

} // namespace quorin::platform

#include "platform/windows/extended_path.h"

#include <QDir>
#include <QFileInfo>
#include <QStringView>

namespace quorin::platform {

QString extendedPath(const QString& path) {
    const QString native =
        QDir::toNativeSeparators(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    constexpr QStringView share = u"\\\\";
    if (native.startsWith(share)) {
        return u"\\\\?\\UNC\\" + QStringView(native).mid(share.size());
    }
    return u"\\\\?\\" + native;
}

} // namespace quorin::platform

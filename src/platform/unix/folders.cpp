#include "platform/folders.h"

#include <QDir>
#include <QFileInfo>

namespace platform {

namespace {

// Says where the common application data lies when it is not the system's usual place.
constexpr const char* kFolderVariable = "QUORIN_COMMON_APPDATA";
constexpr QStringView kUsualFolder = u"/var/lib";

} // namespace

bool shellFoldersAvailable() {
    return true;
}

QString commonApplicationDataFolder() {
    const QString folder = qEnvironmentVariable(kFolderVariable);
    return folder.isEmpty() ? kUsualFolder.toString() : folder;
}

QString commonApplicationDataFolderForLog() {
    return commonApplicationDataFolder();
}

QString joinPath(const QString& left, const QString& right) {
    constexpr QChar separator = u'/';
    const QStringView rest(right);
    return left + separator + (rest.startsWith(separator) ? rest.mid(1) : rest);
}

bool isDirectory(const QString& path) {
    return QFileInfo(path).isDir();
}

bool makeDirectoryPath(const QString& path) {
    return QDir().mkpath(path);
}

} // namespace platform

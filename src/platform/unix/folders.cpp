#include "platform/folders.h"

#include <QDir>
#include <QFileInfo>

namespace quorin::platform {

namespace {

// Environment variable that overrides kDefaultFolder.
constexpr const char* kFolderVariable = "QUORIN_COMMON_APPDATA";
constexpr QStringView kDefaultFolder = u"/var/lib";

} // namespace

bool shellFoldersAvailable() {
    return true;
}

QString commonApplicationDataFolder() {
    const QString folder = qEnvironmentVariable(kFolderVariable);
    return folder.isEmpty() ? kDefaultFolder.toString() : folder;
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

} // namespace quorin::platform

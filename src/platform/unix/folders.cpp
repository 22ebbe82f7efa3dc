#include "platform/folders.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

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

QString runtimeFolder() {
    return QDir::tempPath();
}

bool canCreateFilesIn(const QString& path) {
    return isDirectory(path) && access(QFile::encodeName(path).constData(), W_OK | X_OK) == 0;
}

bool makeDirectoryPath(const QString& path) {
    return QDir().mkpath(path);
}

} // namespace quorin::platform

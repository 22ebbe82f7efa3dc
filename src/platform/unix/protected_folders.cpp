#include "platform/protected_folders.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::platform {

QStringList unprivilegedWriters(const QString& path) {
    return QFile::permissions(path).testFlag(QFile::WriteOther) ? QStringList(u"every account"_s)
                                                                : QStringList();
}

std::vector<UnsafePath> findUnsafePaths(const QString& root, int limit) {
    std::vector<UnsafePath> found;
    const auto examine = [&](const QFileInfo& info) {
        QStringList writers = unprivilegedWriters(info.filePath());
        if (!info.isSymLink() && !writers.isEmpty()) {
            found.push_back({info.absoluteFilePath(), std::move(writers), {}});
        }
    };
    examine(QFileInfo(root));
    QDirIterator entries(root,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext() && static_cast<int>(found.size()) < limit) {
        entries.next();
        examine(entries.fileInfo());
    }
    return found;
}

std::optional<QString> createProtectedFolders(const std::vector<ProtectedFolder>& /*folders*/,
                                              const QString& /*serviceName*/) {
    return std::nullopt;
}

QStringList repairCommands(const QString& root) {
    return {u"chmod -R o-w '"_s + root + u'\''};
}

} // namespace quorin::platform

#include "check/folder_check.h"

#include "check/finding_codes.h"
#include "handlers/file_names.h"
#include "handlers/notification_lock.h"
#include "log/application_logger.h"
#include "platform/folders.h"
#include "platform/protected_folders.h"
#include "server/document_root.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>

#include <array>
#include <filesystem>
#include <system_error>

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

constexpr qint64 kMebibyte = qint64{1024} * 1024;
// Free space below which notifications and log lines are soon lost.
constexpr qint64 kMinFreeBytes = 100 * kMebibyte;

constexpr std::array<QStringView, 4> kServedFolders{u"fwfiles", kNotificationsFolder, u"patterns",
                                                    u"plugins"};

class FolderCheck {
public:
    explicit FolderCheck(Findings& findings) : findings_(findings) {}

    // The folder must exist and be readable. Returns false if it is missing.
    bool requireReadable(const QString& folder, Severity severity, const QString& consequence) {
        if (!platform::isDirectory(folder)) {
            add(severity, code::kFolderMissing, folder, consequence,
                u"Create the folder, or check the account and the environment of this check."_s);
            return false;
        }
        std::error_code error;
        const std::filesystem::directory_iterator entries(folder.toStdU16String(), error);
        if (error) {
            add(severity, code::kFolderNotReadable, folder,
                consequence + u" (" + QString::fromStdString(error.message()) + u')',
                u"Allow the gateway's account to read the folder."_s);
        }
        return true;
    }

    void requireWritable(const QString& folder, const QString& consequence) {
        if (!platform::canCreateFilesIn(folder)) {
            add(Severity::Warning, code::kFolderNotWritable, folder, consequence,
                u"Allow the gateway's account to write to the folder."_s);
        }
    }

    // The newest log file, to which the gateway appends. It belongs to another account if that ran
    // the gateway before.
    void requireWritableLog(const QString& folder) {
        const QFileInfoList files =
            QDir(folder).entryInfoList({u"*.log"_s}, QDir::Files, QDir::Name);
        if (!files.isEmpty() && !files.last().isWritable()) {
            add(Severity::Warning, code::kFolderNotWritable, files.last().filePath(),
                u"nothing is logged while this file is in use"_s,
                u"Allow the gateway's account to write to the file."_s);
        }
    }

    void requireProtected(const QString& path) {
        const QStringList writers = platform::unprivilegedWriters(path);
        if (!writers.isEmpty()) {
            add(Severity::Warning, code::kRightsTooWide, path,
                writers.join(u", "_s) + u" may change it",
                u"Allow only the accounts to write to it that must."_s);
        }
    }

    // Reports each disk once.
    void requireFreeSpace(const QString& folder, const QString& consequence) {
        const QStorageInfo disk(folder);
        if (!disk.isValid() || disk.bytesAvailable() >= kMinFreeBytes ||
            disks_.contains(disk.rootPath())) {
            return;
        }
        disks_.insert(disk.rootPath());
        add(Severity::Warning, code::kDiskSpaceLow, folder,
            u"only " + QString::number(disk.bytesAvailable() / kMebibyte) +
                u" MiB are free; on a full disk, " + consequence,
            u"Free disk space."_s);
    }

private:
    void add(Severity severity, QStringView findingCode, const QString& subject,
             const QString& reason, const QString& action) {
        Finding finding;
        finding.severity = severity;
        finding.code = findingCode;
        finding.subject = QDir::toNativeSeparators(subject);
        finding.reason = reason;
        finding.action = action;
        findings_.push_back(finding);
    }

    Findings& findings_;
    QSet<QString> disks_; // reported
};

QString nearestExistingFolder(QString path) {
    while (!platform::isDirectory(path) && path != QFileInfo(path).path()) {
        path = QFileInfo(path).path();
    }
    return path;
}

// Accounts that may change these can replace the folders in them.
void checkParentFolders(FolderCheck& check) {
    const QString product =
        platform::commonApplicationDataFolder() + u'/' + platform::kProductFolder;
    check.requireProtected(QFileInfo(product).path());
    check.requireProtected(product);
    check.requireProtected(QFileInfo(documentRoot()).path());
    check.requireProtected(QFileInfo(stagingFolder()).path());
}

void checkDocumentRoot(FolderCheck& check) {
    const QString root = documentRoot();
    if (!check.requireReadable(root, Severity::Error, u"no file can be served"_s)) {
        return;
    }
    check.requireProtected(root);
    for (const QStringView name : kServedFolders) {
        const QString folder = root + u'/' + name;
        if (check.requireReadable(folder, Severity::Warning, u"its files cannot be served"_s)) {
            check.requireProtected(folder);
        }
    }
}

void checkStagingFolder(FolderCheck& check) {
    const QString folder = stagingFolder();
    const QString consequence = u"notifications can be neither read nor acknowledged"_s;
    if (check.requireReadable(folder, Severity::Warning, consequence)) {
        check.requireWritable(folder, consequence);
        check.requireProtected(folder);
        check.requireFreeSpace(folder, u"no notification can be acknowledged"_s);
    }
}

void checkLogFolder(FolderCheck& check) {
    const QString folder = logFolder();
    const QString existing = nearestExistingFolder(folder);
    check.requireWritable(existing, u"nothing is logged"_s);
    if (existing == folder) {
        check.requireWritableLog(folder);
        check.requireProtected(folder);
    }
    check.requireFreeSpace(existing, u"log lines are lost"_s);
}

} // namespace

void checkFolders(const QString& settingsFile, Findings& findings) {
    FolderCheck check(findings);
    check.requireProtected(settingsFile);
    check.requireProtected(QCoreApplication::applicationDirPath());
    checkParentFolders(check);
    checkDocumentRoot(check);
    checkStagingFolder(check);
    checkLogFolder(check);
}

} // namespace quorin::check

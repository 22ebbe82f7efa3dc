#include "handlers/notification_lock.h"

#include "handlers/file_names.h"
#include "log/log.h"
#include "platform/folders.h"

#include <QFileInfo>

#include <chrono>

namespace quorin {

namespace {

constexpr std::chrono::milliseconds kAttemptTime{1000};
constexpr QStringView kLockSuffix = u".lock";

} // namespace

QString stagingFolder() {
    QString path = platform::commonApplicationDataFolder();
    for (const QStringView folder :
         {platform::kProductFolder, kGatewayAppFolder, kNotificationStagingFolder}) {
        path = platform::joinPath(path, folder.toString());
    }
    return path;
}

QString stagingPath(const QFileInfo& fileInfo) {
    return platform::joinPath(stagingFolder(), fileInfo.fileName());
}

NotificationLock::NotificationLock(const QFileInfo& fileInfo)
    : stagingPath_(quorin::stagingPath(fileInfo)), file_(stagingPath_ + kLockSuffix) {}

bool NotificationLock::acquire(const std::function<void(int)>& onFailedAttempt) {
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        if (file_.tryLock(static_cast<int>(kAttemptTime.count()))) {
            return true;
        }
        if (onFailedAttempt) {
            onFailedAttempt(attempt);
        }
    }
    return false;
}

void NotificationLock::logFailure() const {
    log::error(u"Failed to Lock for \"" + stagingPath_ + u'"');
}

void NotificationLock::unlockIfLocked() {
    if (file_.isLocked()) {
        file_.unlock();
    }
}

} // namespace quorin

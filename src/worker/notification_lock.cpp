#include "worker/notification_lock.h"

#include "log/application_logger.h"
#include "platform/folders.h"
#include "worker/file_names.h"

#include <QFileInfo>

#include <chrono>

namespace quorin {

namespace {

constexpr std::chrono::milliseconds kAttemptTime{1000};
constexpr QStringView kLockSuffix = u".lock";

} // namespace

QString stagingPath(const QFileInfo& fileInfo) {
    QString path = platform::commonApplicationDataFolder();
    for (const QStringView folder :
         {platform::kProductFolder, kGatewayAppFolder, kNotificationStagingFolder}) {
        path = platform::joinPath(path, folder.toString());
    }
    return platform::joinPath(path, fileInfo.fileName());
}

NotificationLock::NotificationLock(const QFileInfo& fileInfo)
    : stagingPath_(quorin::stagingPath(fileInfo)), file_(stagingPath_ + kLockSuffix) {}

bool NotificationLock::attempt() {
    return file_.tryLock(static_cast<int>(kAttemptTime.count()));
}

bool NotificationLock::acquire() {
    for (int tried = 0; tried < kAttempts; ++tried) {
        if (attempt()) {
            return true;
        }
    }
    return false;
}

void NotificationLock::logFailure() const {
    QuorinGatewayApplicationLogger::logError(u"Failed to Lock for \"" + stagingPath_ + u'"');
}

void NotificationLock::unlockIfLocked() {
    if (file_.isLocked()) {
        file_.unlock();
    }
}

} // namespace quorin

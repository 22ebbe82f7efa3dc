#pragma once

#include <QLockFile>
#include <QString>

#include <functional>

class QFileInfo;

namespace quorin {

// Returns the folder of lock files and new versions of notifications.
[[nodiscard]] QString stagingFolder();

// Returns the path at which a new version of the notification file `fileInfo` is written before it
// replaces the file.
[[nodiscard]] QString stagingPath(const QFileInfo& fileInfo);

// The lock file of a notification file: its staging path followed by ".lock". Every process that
// reads or rewrites a notification file, including the one that writes notifications, holds the
// lock while it does so. The destructor releases it.
class NotificationLock {
public:
    static constexpr int kAttempts = 5;

    explicit NotificationLock(const QFileInfo& fileInfo);

    // Makes up to kAttempts attempts of one second; returns false if all fail. An attempt fails at
    // once if the staging folder is missing. Calls `onFailedAttempt`, if set, with the number of
    // each failed attempt, from 1.
    [[nodiscard]] bool acquire(const std::function<void(int)>& onFailedAttempt = nullptr);

    // Logs at error level that the lock could not be acquired.
    void logFailure() const;

    // Releases the lock if this object holds it.
    void unlockIfLocked();

    [[nodiscard]] const QString& stagingPath() const noexcept { return stagingPath_; }

private:
    QString stagingPath_;
    QLockFile file_;
};

} // namespace quorin

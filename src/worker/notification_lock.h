#pragma once

#include <QLockFile>
#include <QString>

class QFileInfo;

namespace quorin {

// Where a new version of the notification file `fileInfo` is written before it takes its place.
[[nodiscard]] QString stagingPath(const QFileInfo& fileInfo);

// The lock that everybody takes who reads or rewrites a notification file, the process that
// writes notifications included: the file's staging path with ".lock" behind it. Held only while
// reading or rewriting; released with the object at the latest.
class NotificationLock {
public:
    static constexpr int kAttempts = 5;

    explicit NotificationLock(const QFileInfo& fileInfo);

    // Tries for one second to take the lock. At once false where the staging folder is missing.
    [[nodiscard]] bool attempt();

    // As many attempts as allowed; false when the lock is not held after them.
    [[nodiscard]] bool acquire();

    // Logs at error that the lock could not be taken.
    void logFailure() const;

    void unlockIfLocked();

    [[nodiscard]] const QString& stagingPath() const noexcept { return stagingPath_; }

private:
    QString stagingPath_;
    QLockFile file_;
};

} // namespace quorin

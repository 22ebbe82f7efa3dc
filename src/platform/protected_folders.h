#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace quorin::platform {

// A file or folder that unprivileged accounts can change.
struct UnsafePath {
    QString path;
    QStringList writers; // names of accounts and groups; if empty, `error` is set
    QString error;       // why the access rights cannot be read
};

// Returns the names of the accounts that can change the file or folder `path` and are neither
// administrators nor the system nor services nor the account of this process: because they own it
// or because the access list allows it. Empty if there are none, or if `path` or its access list
// cannot be read. On Linux only reports that every account can write to it.
[[nodiscard]] QStringList unprivilegedWriters(const QString& path);

// Examines `root` and everything below it. Returns the first `limit` paths with
// unprivilegedWriters(), to which the account of this process counts here. Access that the list
// denies again is reported nevertheless. The target of a link is examined, but not what is below
// it.
//
// Returns nothing if `root` does not exist. On Linux only reports what every account can write to.
[[nodiscard]] std::vector<UnsafePath> findUnsafePaths(const QString& root, int limit = 20);

enum class FolderAccess { Read, Modify };

struct ProtectedFolder {
    QString path; // with the system's separators
    FolderAccess serviceAccess = FolderAccess::Read;
};

// Creates the folders, in this order. A new folder belongs to the administrators and does not
// inherit access rights. It and what is created in it give full control to administrators and the
// system, `serviceAccess` to the service `serviceName`, and read access to users. A folder that
// exists keeps its rights; those of the service are added. It is an error if findUnsafePaths()
// would report it.
//
// Returns the error text on failure. Does nothing on Linux.
[[nodiscard]] std::optional<QString>
createProtectedFolders(const std::vector<ProtectedFolder>& folders, const QString& serviceName);

// Returns the commands with which an administrator gives `root` and everything below it the rights
// that createProtectedFolders() gives to new folders, without those of the service.
[[nodiscard]] QStringList repairCommands(const QString& root);

} // namespace quorin::platform

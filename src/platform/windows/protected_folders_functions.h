#pragma once

#include "platform/protected_folders.h"
#include "platform/windows/system.h"

#include <aclapi.h>

namespace quorin::platform {

// The Windows functions for access rights. Tests replace them to supply access lists and to
// simulate failures.
struct ProtectedFoldersFunctions {
    decltype(&GetNamedSecurityInfoW) getSecurity = &GetNamedSecurityInfoW;
    decltype(&SetNamedSecurityInfoW) setSecurity = &SetNamedSecurityInfoW;
    decltype(&SetEntriesInAclW) addEntries = &SetEntriesInAclW;
    decltype(&LookupAccountSidW) lookUpAccount = &LookupAccountSidW;
    decltype(&CreateDirectoryW) createFolder = &CreateDirectoryW;
};

// The functions of protected_folders.h, with the given functions of the system. `ownAccount` is the
// identifier of the account of this process.
[[nodiscard]] QStringList unprivilegedWritersWith(const ProtectedFoldersFunctions& system,
                                                  const QString& path, const QString& ownAccount);
[[nodiscard]] std::vector<UnsafePath> findUnsafePathsWith(const ProtectedFoldersFunctions& system,
                                                          const QString& root, int limit = 20);
[[nodiscard]] std::optional<QString>
createProtectedFoldersWith(const ProtectedFoldersFunctions& system,
                           const std::vector<ProtectedFolder>& folders, const QString& serviceName);

// Returns the security identifier of the service `name`, which the system derives from the name, as
// text. The service does not have to exist.
[[nodiscard]] QString serviceIdentifier(const QString& name);

} // namespace quorin::platform

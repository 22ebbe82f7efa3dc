#include "platform/windows/access_list.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/system.h"

namespace quorin::platform {

std::optional<AccessList> readAccessList(const QString& path) {
    const QString native = extendedPath(path);
    DWORD size = 0;
    GetFileSecurityW(wide(native), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    AccessList list(size);
    if (list.empty() || GetFileSecurityW(wide(native), DACL_SECURITY_INFORMATION, list.data(), size,
                                         &size) == FALSE) {
        return std::nullopt;
    }
    return list;
}

// SetNamedSecurityInfo() would replace the inherited entries by those of the folder that the file
// is in now. SetFileSecurity() uses the list as it is.
bool writeAccessList(const QString& path, AccessList list) {
    // Without this request the system removes the mark that the list has inherited entries.
    SetSecurityDescriptorControl(list.data(), SE_DACL_AUTO_INHERIT_REQ, SE_DACL_AUTO_INHERIT_REQ);
    return SetFileSecurityW(wide(extendedPath(path)), DACL_SECURITY_INFORMATION, list.data()) !=
           FALSE;
}

} // namespace quorin::platform

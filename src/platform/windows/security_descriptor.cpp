#include "platform/windows/security_descriptor.h"

#include "platform/windows/handle.h"

#include <sddl.h>

#include <cstddef>
#include <vector>

namespace quorin::platform {

SecurityAttributes::SecurityAttributes(const QString& descriptor) {
    PSECURITY_DESCRIPTOR converted = nullptr;
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(wide(descriptor), SDDL_REVISION_1,
                                                             &converted, nullptr) != FALSE) {
        descriptor_.reset(converted);
        attributes_.lpSecurityDescriptor = converted;
    }
}

QString ownAccount() {
    HANDLE handle = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &handle) == FALSE) {
        return {};
    }
    const Handle token = ownHandle(handle);
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    if (GetTokenInformation(token.get(), TokenUser, user.data(), size, &size) == FALSE) {
        return {};
    }
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid, &text) ==
        FALSE) {
        return {};
    }
    const QString account = QString::fromWCharArray(text);
    LocalFree(text);
    return account;
}

} // namespace quorin::platform

#include "platform/windows/own_folder.h"

#include "platform/windows/system.h"

#include <vector>

namespace quorin::platform {

QString ownFolder() {
    constexpr DWORD longestPath = 32'768;
    static const char ownAddress = '\0';
    HMODULE module = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                               GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t*>(&ownAddress), &module) == FALSE) {
        return {};
    }
    std::vector<wchar_t> path(longestPath);
    const DWORD length = GetModuleFileNameW(module, path.data(), longestPath);
    const QString file = QString::fromWCharArray(path.data(), static_cast<int>(length));
    return file.left(file.lastIndexOf(u'\\') + 1);
}

} // namespace quorin::platform

#include "platform/own_libraries.h"

#include "platform/windows/own_folder.h"
#include "platform/windows/system.h"

#include <QCoreApplication>

namespace quorin::platform {

void useOwnLibraries() {
    const QString folder = ownFolder();
    if (folder.isEmpty()) {
        return;
    }
    QCoreApplication::addLibraryPath(folder);
    // Qt's TLS plugin imports both by name. Loaded already, they are found by that name. Otherwise
    // the system would search the host program's folder, the current folder and PATH.
    for (const wchar_t* const name : {QUORIN_LIBCRYPTO, QUORIN_LIBSSL}) {
        // Remains loaded as long as the process. Without OpenSSL, only HTTPS fails.
        LoadLibraryExW(wide(folder + QString::fromWCharArray(name)), nullptr,
                       LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
}

} // namespace quorin::platform

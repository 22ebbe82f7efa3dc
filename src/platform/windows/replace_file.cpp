#include "platform/replace_file.h"

#include "platform/windows/system.h"

#include <QFile>

#include <io.h>

namespace quorin::platform {

bool flushToDisk(QFile& file) {
    if (!file.flush()) {
        return false;
    }
    // Qt opens a C runtime descriptor for the handle that it uses itself.
    const int descriptor = file.handle();
    return descriptor >= 0 &&
           FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor))) != FALSE;
}

bool replaceFile(const QString& from, const QString& to) {
    return MoveFileExW(wide(from), wide(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
           FALSE;
}

} // namespace quorin::platform

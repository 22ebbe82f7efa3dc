#include "platform/replace_file.h"

#include "platform/windows/system.h"

namespace platform {

bool replaceFile(const QString& from, const QString& to) {
    return MoveFileExW(wide(from), wide(to), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

} // namespace platform

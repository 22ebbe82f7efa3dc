#include "platform/windows/move_file.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/system.h"

namespace quorin::platform {

unsigned long moveReplacing(const QString& from, const QString& to) {
    return MoveFileExW(wide(extendedPath(from)), wide(extendedPath(to)),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE
               ? ERROR_SUCCESS
               : GetLastError();
}

bool moveWithRetries(const MoveFunctions& functions) {
    const auto deadline = functions.now() + kMoveRetryTime;
    for (;;) {
        const unsigned long error = functions.move();
        if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) {
            return error == ERROR_SUCCESS;
        }
        if (functions.now() >= deadline) {
            return false;
        }
        functions.sleep(kMoveRetryPause);
    }
}

} // namespace quorin::platform

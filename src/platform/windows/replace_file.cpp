#include "platform/replace_file.h"

#include "platform/windows/access_list.h"
#include "platform/windows/move_file.h"
#include "platform/windows/system.h"

#include <QFile>

#include <io.h>

#include <chrono>
#include <optional>
#include <thread>

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

// ReplaceFile() keeps the access rights itself, but is not atomic: if it fails halfway, no file
// `to` exists.
bool replaceFile(const QString& from, const QString& to) {
    const std::optional<AccessList> ownList = readAccessList(from);
    const std::optional<AccessList> keptList = readAccessList(to);
    const bool isListChanged = ownList && keptList && writeAccessList(from, *keptList);
    const bool isMoved = moveWithRetries({
        .move = [&] { return moveReplacing(from, to); },
        .now = &std::chrono::steady_clock::now,
        .sleep = [](std::chrono::milliseconds pause) { std::this_thread::sleep_for(pause); },
    });
    if (!isMoved && isListChanged) {
        writeAccessList(from, *ownList);
    }
    return isMoved;
}

} // namespace quorin::platform

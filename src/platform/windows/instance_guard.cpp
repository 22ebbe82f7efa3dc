#include "platform/instance_guard.h"

#include "platform/windows/system.h"

#include <QSharedMemory>

#include <memory>
#include <type_traits>

namespace quorin::platform {

namespace {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using Handle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

} // namespace

// The system frees the segment when its process ends, even if the process is killed.
bool takeInstanceGuard(QSharedMemory& guard) {
    return guard.create(1);
}

bool isInstanceGuardHeld(const QString& key) {
    const QString nativeKey = QSharedMemory(key).nativeKey();
    return Handle(OpenFileMappingW(FILE_MAP_READ, FALSE, wide(nativeKey))) != nullptr;
}

} // namespace quorin::platform

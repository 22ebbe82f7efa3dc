#include "platform/instance_guard.h"

#include "platform/windows/global_mutex.h"

#include <QSharedMemory>

#include <utility>

namespace quorin::platform {

// The system removes both objects when their last handle is closed, at the latest when the process
// ends. The existence of the mutex is the guard. No thread owns it, because the guard may be
// released on another one.
struct InstanceGuard::State {
    QString key;
    Handle mutex; // released after the segment: a process that takes the mutex finds no segment
    std::unique_ptr<QSharedMemory> segment;
};

InstanceGuard::InstanceGuard(const QString& key)
    : state_(std::make_unique<State>(State{key, nullptr, nullptr})) {}

InstanceGuard::~InstanceGuard() = default;

// After a failed create(), a QSharedMemory keeps the existing segment open and thereby alive: two
// waiting processes would prevent each other from ever creating it. Therefore each attempt has its
// own QSharedMemory.
bool InstanceGuard::take() {
    Handle mutex = createMutex(state_->key);
    if (!mutex) {
        return false;
    }
    auto segment = std::make_unique<QSharedMemory>(state_->key);
    if (!segment->create(1)) {
        return false;
    }
    state_->mutex = std::move(mutex);
    state_->segment = std::move(segment);
    return true;
}

bool isInstanceGuardHeld(const QString& key) {
    return Handle(OpenMutexW(SYNCHRONIZE, FALSE, wide(key))) ||
           GetLastError() == ERROR_ACCESS_DENIED;
}

} // namespace quorin::platform

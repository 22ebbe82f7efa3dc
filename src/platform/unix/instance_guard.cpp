#include "platform/instance_guard.h"

#include <QFile>
#include <QSharedMemory>

#include <sys/ipc.h>
#include <sys/shm.h>

namespace quorin::platform {

struct InstanceGuard::State {
    QSharedMemory segment;
};

InstanceGuard::InstanceGuard(const QString& key) : state_(std::make_unique<State>()) {
    state_->segment.setKey(key);
}

InstanceGuard::~InstanceGuard() = default;

bool InstanceGuard::take() {
    constexpr qsizetype size = 1;
    QSharedMemory& segment = state_->segment;
    if (segment.create(size)) {
        return true;
    }
    // The segment of a killed process remains. Detaching removes it unless its holder is still
    // running, because the last process to detach removes a segment.
    if (segment.error() != QSharedMemory::AlreadyExists || !segment.attach()) {
        return false;
    }
    segment.detach();
    return segment.create(size);
}

bool isInstanceGuardHeld(const QString& key) {
    constexpr int projectOfQt = 'Q'; // with which QSharedMemory converts the key
    const QByteArray file = QFile::encodeName(QSharedMemory(key).nativeKey());
    const key_t systemKey = ftok(file.constData(), projectOfQt);
    const int segment = systemKey == -1 ? -1 : shmget(systemKey, 0, 0);
    if (segment == -1) {
        return false;
    }
    shmid_ds status{};
    // The segment of another account does not show its holders: assume that there is one.
    return shmctl(segment, IPC_STAT, &status) == -1 || status.shm_nattch > 0;
}

} // namespace quorin::platform

#include "platform/instance_guard.h"

#include <QSharedMemory>

#include <utility>

namespace quorin::platform {

struct InstanceGuard::State {
    QSharedMemory segment;
};

InstanceGuard::InstanceGuard(QString key) : state_(std::make_unique<State>()) {
    state_->segment.setKey(std::move(key));
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

} // namespace quorin::platform

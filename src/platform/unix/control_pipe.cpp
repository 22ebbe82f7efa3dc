#include "platform/control_pipe.h"

#include <QLocalSocket>

#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace quorin::platform {

struct ControlPipe::State {};

ControlPipe::ControlPipe(QString name) : name_(std::move(name)) {
    removeServer(name_);
    setSocketOptions(UserAccessOption);
}

ControlPipe::~ControlPipe() = default;

std::optional<QString> ControlPipe::open() {
    return listen(name_) ? std::nullopt : std::optional(errorString());
}

bool isServedByThisProcess(const QLocalSocket& pipe) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(static_cast<int>(pipe.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer,
                      &size) == 0 &&
           peer.pid == getpid();
}

} // namespace quorin::platform

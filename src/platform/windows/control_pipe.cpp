#include "platform/control_pipe.h"

#include "platform/windows/pipe_reservation.h"

#include <QLocalSocket>

#include <utility>

namespace quorin::platform {

// QLocalServer alone is not sufficient:
//  - It adds instances to a pipe that another process has created. Controllers would then reach
//    either process.
//  - Its access options cannot name administrators. Without options, Everyone may open the pipe for
//    reading, also from the network, and thereby block the gateway.
//  - It cannot serve a pipe created elsewhere: listen(qintptr) is not supported on Windows.
// Windows takes the access rights of a pipe from its first instance and ignores those of later
// instances. It is therefore sufficient to create the first instance here.
struct ControlPipe::State {
    PipeReservation reservation;
};

ControlPipe::ControlPipe(QString name)
    : name_(std::move(name)), state_(std::make_unique<State>()) {}

ControlPipe::~ControlPipe() = default;

std::optional<QString> ControlPipe::open() {
    if (std::optional<QString> failure = state_->reservation.reserve(name_)) {
        return failure;
    }
    // If this fails, QLocalServer keeps the instances that it has created, and no first instance
    // could be created again. The reservation is therefore kept as well.
    if (!listen(name_)) {
        return errorString();
    }
    // Like other connections, an early one is reported by the event loop.
    const auto acceptEarlyController = [this] {
        if (Handle controller = state_->reservation.takeEarlyController()) {
            incomingConnection(reinterpret_cast<quintptr>(controller.release()));
        }
    };
    QMetaObject::invokeMethod(this, acceptEarlyController, Qt::QueuedConnection);
    return std::nullopt;
}

QString obstacleToControlPipe(const QString& /*name*/) {
    return {};
}

bool isServedByThisProcess(const QLocalSocket& pipe) {
    ULONG server = 0;
    return GetNamedPipeServerProcessId(reinterpret_cast<HANDLE>(pipe.socketDescriptor()),
                                       &server) != FALSE &&
           server == GetCurrentProcessId();
}

} // namespace quorin::platform

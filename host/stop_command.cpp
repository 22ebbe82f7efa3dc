#include "stop_command.h"

#include "command_line.h"
#include "platform/control_pipe.h"
#include "usage.h"

#include <QCoreApplication>
#include <QLocalSocket>
#include <QThread>

#include <chrono>
#include <cstdio>
#include <memory>

namespace quorin {

namespace {

constexpr std::chrono::milliseconds kRetryInterval{100};
constexpr int kNoTimeLimit = -1;

// Returns true if the server exists but has no free connection. Qt then reports a connection
// attempt in progress or, for a Windows pipe without a free instance, this error after some
// seconds.
bool isBusy(const QLocalSocket& pipe) {
    return pipe.state() == QLocalSocket::ConnectingState ||
           (pipe.state() == QLocalSocket::UnconnectedState &&
            pipe.error() == QLocalSocket::ConnectionError);
}

// Waits while the pipe is busy. Returns a socket that is connected, or whose error() is the reason
// why it is not.
std::unique_ptr<QLocalSocket> openControlPipe() {
    for (;;) {
        // Retries here: QLocalSocket::waitForConnected() would poll without pause.
        auto pipe = std::make_unique<QLocalSocket>();
        // A write-only pipe would not report that the server closes it.
        pipe->connectToServer(platform::kControlPipeName.toString(), QIODevice::ReadWrite);
        if (!isBusy(*pipe)) {
            return pipe;
        }
        pipe.reset();
        QThread::msleep(kRetryInterval.count());
    }
}

} // namespace

StopResult sendStopCommand(StopTarget target) {
    const std::unique_ptr<QLocalSocket> pipe = openControlPipe();
    if (pipe->state() != QLocalSocket::ConnectedState) {
        return pipe->error() == QLocalSocket::SocketAccessError ? StopResult::AccessDenied
                                                                : StopResult::NoGateway;
    }
    if (target == StopTarget::GatewayOfThisProcess && !platform::isServedByThisProcess(*pipe)) {
        return StopResult::NoGateway;
    }
    pipe->write(platform::kQuitCommand.data(), platform::kQuitCommand.size());
    // The gateway closes the pipe after reading the command, possibly before the write is reported
    // as complete. Closing this end first could discard the command.
    pipe->waitForBytesWritten(kNoTimeLimit);
    if (pipe->state() != QLocalSocket::UnconnectedState) {
        pipe->waitForDisconnected(kNoTimeLimit);
    }
    return StopResult::Delivered;
}

int stopCommand(const CommandLine& line) {
    if (!line.arguments.empty()) {
        return reportUsageError("'stop' takes no arguments");
    }
    const QCoreApplication application(line.argc, line.argv);
    switch (sendStopCommand(StopTarget::AnyGateway)) {
    case StopResult::Delivered:
        return kOk;
    case StopResult::AccessDenied:
        std::fprintf(stderr, "quorin-gateway: permission denied: cannot open the gateway's control "
                             "pipe\n");
        return kPermissionDenied;
    case StopResult::NoGateway:
        break;
    }
    std::fprintf(stderr, "quorin-gateway: no gateway listens for commands on this machine\n");
    return kFailed;
}

} // namespace quorin

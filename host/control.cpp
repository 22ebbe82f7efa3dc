#include "control.h"

#include "platform/control_pipe.h"
#include "server/control_channel.h"

#include <QLocalSocket>

#include <chrono>

namespace quorin {

bool tellToStop(Gateway gateway) {
    constexpr std::chrono::milliseconds patience = std::chrono::seconds(5);
    constexpr int patienceMs = static_cast<int>(patience.count());
    QLocalSocket pipe;
    pipe.connectToServer(kControlPipeName.toString(), QIODevice::WriteOnly);
    if (!pipe.waitForConnected(patienceMs)) {
        return false;
    }
    if (gateway == Gateway::OfThisProcess && !platform::isServedByThisProcess(pipe)) {
        return false;
    }
    pipe.write(kQuitCommand.data(), kQuitCommand.size());
    // A gateway that has read the command closes the pipe, which may come before the news that all
    // was written.
    const bool delivered =
        pipe.waitForBytesWritten(patienceMs) || pipe.state() == QLocalSocket::UnconnectedState;
    pipe.disconnectFromServer();
    return delivered;
}

} // namespace quorin

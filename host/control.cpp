#include "control.h"

#include "platform/control_pipe.h"
#include "server/control_channel.h"

#include <QLocalSocket>

#include <chrono>

namespace quorin {

namespace {

constexpr std::chrono::seconds kConnecting{5};
// The gateway may be waiting for another controller first.
constexpr std::chrono::seconds kReading = kCommandTimeout + kConnecting;

int milliseconds(std::chrono::milliseconds time) {
    return static_cast<int>(time.count());
}

} // namespace

bool tellToStop(Gateway gateway) {
    QLocalSocket pipe;
    // Not for writing alone, which would not tell of the pipe's end.
    pipe.connectToServer(kControlPipeName.toString(), QIODevice::ReadWrite);
    if (!pipe.waitForConnected(milliseconds(kConnecting))) {
        return false;
    }
    if (gateway == Gateway::OfThisProcess && !platform::isServedByThisProcess(pipe)) {
        return false;
    }
    pipe.write(kQuitCommand.data(), kQuitCommand.size());
    // A gateway that has read the command closes the pipe, which may come before the news that all
    // was written. To close it earlier from here could take the command along.
    pipe.waitForBytesWritten(milliseconds(kConnecting));
    return pipe.state() == QLocalSocket::UnconnectedState ||
           pipe.waitForDisconnected(milliseconds(kReading));
}

} // namespace quorin

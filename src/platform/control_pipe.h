#pragma once

#include <QByteArrayView>
#include <QLocalServer>
#include <QString>
#include <QStringView>

#include <chrono>
#include <memory>
#include <optional>

class QLocalSocket;

namespace quorin::platform {

// The local pipe on which the gateway accepts the stop command. A controller connects, writes
// "quit" and disconnects. The gateway writes nothing to the pipe.
inline constexpr QStringView kControlPipeName = u"\\\\.\\pipe\\TO_GATEWAY_HTTP_SERVER";
// The stop command in UTF-8. A byte order mark before it, and everything from the first NUL on, is
// ignored.
inline constexpr QByteArrayView kQuitCommand = "quit";
// How long the gateway waits for a connected controller to write.
inline constexpr std::chrono::seconds kCommandTimeout{30};

// The gateway's end of a control pipe. Listens like any QLocalServer, but only after open(), not
// listen(). The pipe can be opened by
//  - Linux: the user of this process;
//  - Windows: administrators, the local system and the account of this process, except from the
//    network. That includes network logons to this machine, such as PowerShell remoting and SSH.
// Use it on one thread.
class ControlPipe : public QLocalServer {
public:
    // On Linux removes a stale socket file of that name.
    explicit ControlPipe(QString name);
    // Closes the pipe.
    ~ControlPipe() override;

    // Tries once to listen. Returns the reason if that fails; call it again to retry. On Windows a
    // pipe of that name in any process, this one included, is a reason.
    [[nodiscard]] std::optional<QString> open();

private:
    struct State;

    QString name_;
    std::unique_ptr<State> state_;
};

// Returns why the system cannot listen on the pipe `name` now, for a reason that does not end by
// itself, or an empty text.
[[nodiscard]] QString obstacleToControlPipe(const QString& name);

// Returns true if `pipe` is connected to a server in this process.
[[nodiscard]] bool isServedByThisProcess(const QLocalSocket& pipe);

} // namespace quorin::platform

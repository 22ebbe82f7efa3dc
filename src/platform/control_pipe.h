#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <chrono>

class QLocalServer;
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

// Prepares `server` to listen on the pipe `name`. On Linux removes a stale socket file of that name
// and restricts access to the user of this process; on Windows the system's default access rights
// apply. Call before listen().
void prepareControlPipe(QLocalServer& server, const QString& name);

// Returns why the system cannot listen on the pipe `name` now, for a reason that does not end by
// itself, or an empty text.
[[nodiscard]] QString obstacleToControlPipe(const QString& name);

// Returns true if `pipe` is connected to a server in this process.
[[nodiscard]] bool isServedByThisProcess(const QLocalSocket& pipe);

} // namespace quorin::platform

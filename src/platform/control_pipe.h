#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

#include <chrono>

class QLocalServer;
class QLocalSocket;

namespace quorin::platform {

// The pipe through which a controlling process stops the gateway: it connects, writes "quit" and
// disconnects. The gateway writes nothing back.
inline constexpr QStringView kControlPipeName = u"\\\\.\\pipe\\TO_GATEWAY_HTTP_SERVER";
// As UTF-8; a byte order mark may precede it, and everything from the first NUL on is ignored.
inline constexpr QByteArrayView kQuitCommand = "quit";
// How long the gateway waits for a connected controller to write.
inline constexpr std::chrono::seconds kCommandTimeout{30};

// Prepares `server` to listen on the pipe `name`: removes a stale pipe file of that name and sets
// the access rights that are usual on this system. Call before listen().
void prepareControlPipe(QLocalServer& server, const QString& name);

// Returns true if `pipe` is connected to a server in this process.
[[nodiscard]] bool isServedByThisProcess(const QLocalSocket& pipe);

} // namespace quorin::platform

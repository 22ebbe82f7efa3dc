#pragma once

#include <QString>

class QLocalServer;
class QLocalSocket;

namespace platform {

// Prepares `server` to listen on the pipe `name`: removes a stale pipe file of that name and sets
// the access rights that are usual on this system. Call before listen().
void prepareControlPipe(QLocalServer& server, const QString& name);

// Returns true if `pipe` is connected to a server in this process.
[[nodiscard]] bool isServedByThisProcess(const QLocalSocket& pipe);

} // namespace platform

#pragma once

#include <QString>

class QLocalServer;
class QLocalSocket;

namespace platform {

// Readies `server` to listen on the pipe `name`: clears what a previous run left under that name
// and sets who may open the pipe, as is usual on this system. Call before listen().
void prepareControlPipe(QLocalServer& server, const QString& name);

// True when the server at the other end of the connected `pipe` is this process.
[[nodiscard]] bool isServedByThisProcess(const QLocalSocket& pipe);

} // namespace platform

#pragma once

#include <QString>

class QLocalServer;

namespace platform {

// Readies `server` to listen on the pipe `name`: clears what a previous run left under that name
// and sets who may open the pipe, as is usual on this system. Call before listen().
void prepareControlPipe(QLocalServer& server, const QString& name);

} // namespace platform

#include "platform/control_pipe.h"

#include "platform/folders.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>

#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace quorin::platform {

struct ControlPipe::State {};

ControlPipe::ControlPipe(QString name) : name_(std::move(name)) {
    removeServer(name_);
    setSocketOptions(UserAccessOption);
}

ControlPipe::~ControlPipe() = default;

std::optional<QString> ControlPipe::open() {
    return listen(name_) ? std::nullopt : std::optional(errorString());
}

// The pipe is a socket file in the temporary folder.
QString obstacleToControlPipe(const QString& name) {
    // The name of a folder that does not exist is empty: the pipe is then in the root folder.
    const QString folder = QDir::cleanPath(QDir::tempPath()) + u'/';
    const QString file = folder + name;
    if (!canCreateFilesIn(folder)) {
        return u"this account may not create files in " + folder +
               (folder.size() == 1 ? u", used because the temporary folder does not exist" : u"");
    }
    if (isDirectory(file)) {
        return file + u" is a folder";
    }
    if (QFile::encodeName(file).size() >= qsizetype(sizeof(sockaddr_un::sun_path))) {
        return u"the path of the temporary folder is too long: " + folder;
    }
    return {};
}

bool isServedByThisProcess(const QLocalSocket& pipe) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(static_cast<int>(pipe.socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &peer,
                      &size) == 0 &&
           peer.pid == getpid();
}

} // namespace quorin::platform

#include "platform/windows/pipe_reservation.h"

#include "platform/windows/security_descriptor.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

constexpr DWORD kDefaultTimeout = 3000; // in ms

// Denies everything to network logons (NU), then allows everything to the local system (SY),
// administrators (BA) and one account. Remote clients have a network logon; the flag that refuses
// them applies to the first instance only.
QString pipeAccess(const QString& account) {
    return u"D:P(D;;FA;;;NU)(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;" + account + u')';
}

QString failure(const QString& name, DWORD error) {
    return u"the pipe " + name + u" cannot be created: " + qt_error_string(static_cast<int>(error));
}

// Returns why the first instance could not be created. If a process has the pipe already, the error
// is ERROR_ACCESS_DENIED or, if that process allows no more instances, ERROR_PIPE_BUSY.
QString creationFailure(const QString& name, DWORD error) {
    if (error == ERROR_ACCESS_DENIED || error == ERROR_PIPE_BUSY) {
        return u"the pipe " + name + u" is in use by another process";
    }
    return failure(name, error);
}

} // namespace

std::optional<QString> PipeReservation::reserve(const QString& name) {
    if (server_) {
        return std::nullopt;
    }
    const QString account = ownAccount();
    if (account.isEmpty()) {
        return failure(name, GetLastError());
    }
    SecurityAttributes attributes(pipeAccess(account));
    if (attributes.get() == nullptr) {
        return failure(name, GetLastError());
    }
    // The first instance also determines access mode, type, maximum number of instances and default
    // time-out of the others: these are QLocalServer's.
    Handle server = ownHandle(system_.create(
        wide(name), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS,
        PIPE_UNLIMITED_INSTANCES, 0, 0, kDefaultTimeout, attributes.get()));
    if (!server) {
        return creationFailure(name, GetLastError());
    }
    // A controller can connect before this process does.
    Handle client = ownHandle(system_.open(wide(name), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                           SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr));
    if (!client && GetLastError() != ERROR_PIPE_BUSY) {
        return failure(name, GetLastError());
    }
    server_ = std::move(server);
    client_ = std::move(client);
    return std::nullopt;
}

Handle PipeReservation::takeEarlyController() {
    return client_ ? nullptr : std::move(server_);
}

} // namespace quorin::platform
